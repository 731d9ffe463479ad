#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/support/SessionList.h"

namespace qel::support {

/// The category that environment records are shown under.
inline constexpr std::string_view environmentCategory = "Environment";

/// One record of a session.
struct Event {
  std::string time;
  std::string category;
  std::string subcategory;
  std::string event;
  std::vector<std::pair<std::string, std::string>> details;
  std::string text;  ///< the stored JSON object

  /// The value of a detail; empty if there is none.
  std::string_view detail(std::string_view key) const;
};

/// "Subcategory: Event", or the one of them that is not empty.
std::string titleOf(const Event& event);
/// "key = value; key = value".
std::string detailsOf(const Event& event);

/// The session's records in the order in which they were written. Environments, which have a table
/// of their own, are inserted by their time.
std::vector<Event> eventsOf(const Session& session);

}  // namespace qel::support
