#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/support/Event.h"

namespace qel::support {

/// Template data of the report's tables: at most 2000 "rows", and the number of rows "leftOut".

/// How often each command was started, accepted and cancelled, the most used first; false if there
/// are no commands.
kainjow::mustache::data commandTable(const std::vector<Event>& events);
/// Every issue that was added or removed, and when; false if there are none.
kainjow::mustache::data issueTable(const std::vector<Event>& events);
/// A list of tables, one for each category, with its records in their order.
kainjow::mustache::data eventTables(const std::vector<Event>& events);

}  // namespace qel::support
