#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/support/SessionList.h"

namespace qel::support {

/// What an environment record counts as among events.
inline constexpr std::string_view environmentCategory = "Environment";

/// One record of a session.
struct Event {
  std::string time;
  std::string category;
  std::string subcategory;
  std::string event;
  std::vector<std::pair<std::string, std::string>> details;
  std::string text;  ///< as it is stored, one JSON object

  /// The detail's value; empty when there is none.
  std::string_view detail(std::string_view key) const;
};

/// "Subcategory: Event", or what there is of it.
std::string titleOf(const Event& event);
/// "key = value; key = value".
std::string detailsOf(const Event& event);

/// The session's records in the order of their writing, environments where their time puts them.
std::vector<Event> eventsOf(const Session& session);

}  // namespace qel::support
