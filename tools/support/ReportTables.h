#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/support/Event.h"

namespace qel::support {

/// What the tables of a report show. A table holds at most 2000 "rows" and the number of those
/// "leftOut".

/// How often each command was started, accepted and cancelled, the most used first; false when
/// there are none.
kainjow::mustache::data commandTable(const std::vector<Event>& events);
/// Every issue that was added or removed, and when; false when there are none.
kainjow::mustache::data issueTable(const std::vector<Event>& events);
/// A list of tables: the records of each category in their order.
kainjow::mustache::data eventTables(const std::vector<Event>& events);

}  // namespace qel::support
