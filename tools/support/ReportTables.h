#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/records/Event.h"

namespace qel::support {

/// Template data of the report's tables. A table has at most 2000 "rows". If there are more,
/// "leftOut" is the number of omitted rows.

/// A table of how often each command was started, accepted and cancelled. The most used command
/// comes first. False if there are no commands.
kainjow::mustache::data commandTable(const std::vector<records::Event>& events);
/// A table of all issues that were added or removed, with the times. False if there are none.
kainjow::mustache::data issueTable(const std::vector<records::Event>& events);
/// A list of tables, one for each category. A table has the category's records in the order of
/// `events`.
kainjow::mustache::data eventTables(const std::vector<records::Event>& events);

}  // namespace qel::support
