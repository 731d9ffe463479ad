#pragma once

#include <string>
#include <vector>

#include "tools/support/Event.h"

namespace qel::support {

/// Parts of a report (HTML). Each is one paragraph where there is nothing to tell; tables end after
/// 2000 rows.

/// How often each command was started, accepted and cancelled, the most used first.
std::string commandTable(const std::vector<Event>& events);
/// Every issue that was added or removed, and when.
std::string issueTable(const std::vector<Event>& events);
/// The records of each category in their order.
std::string eventTables(const std::vector<Event>& events);

}  // namespace qel::support
