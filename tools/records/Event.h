#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/records/Session.h"

namespace qel::records {

/// The category under which environment records are shown.
inline constexpr std::string_view environmentCategory = "Environment";

/// One record of a session.
struct Event {
  std::string installation;
  std::string time;
  std::string category;
  std::string subcategory;
  std::string event;
  std::vector<std::pair<std::string, std::string>> details;
  std::string text;  ///< the stored JSON object

  /// The value of a detail; empty if there is none.
  std::string_view detail(std::string_view key) const;
};

/// The title "Subcategory: Event", or only one of these names if the other is empty.
std::string titleOf(const Event& event);
/// The details as "key = value; key = value".
std::string detailsOf(const Event& event);

/// The session's records in the order in which they were written. Environment records, which have a
/// separate table, are inserted by time.
std::vector<Event> eventsOf(const Session& session);

}  // namespace qel::records
