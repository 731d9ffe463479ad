#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/records/Event.h"
#include "tools/report/Ending.h"

namespace qel::report {

/// Template data of the report's tables. A table has at most 2000 "rows". If there are more,
/// "leftOut" is the number of omitted rows. Tables in the order of time omit the first rows.

/// A table of the last 200 records before the end, the crash or stop itself, and the first 200
/// records after it, of all categories. "leftOut" is about those before the end, "leftOutAfter"
/// about those after it. False if there are no records.
kainjow::mustache::data endTable(const std::vector<records::Event>& events, const Ending& ending);

/// A table of how often each command was started, accepted and cancelled. The most used command
/// comes first; the least used ones are omitted. False if there are no commands.
kainjow::mustache::data commandTable(const std::vector<records::Event>& events);
/// A table of all issues that were added or removed, with the times. False if there are none.
kainjow::mustache::data issueTable(const std::vector<records::Event>& events);
/// A list of tables, one for each category. A table has the category's records in the order of
/// `events`.
kainjow::mustache::data eventTables(const std::vector<records::Event>& events);

}  // namespace qel::report
