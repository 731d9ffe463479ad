#pragma once

#include <string>
#include <vector>

#include "tools/support/Event.h"
#include "tools/support/TimeAxis.h"

namespace qel::support {

/// The memory in use over the session's time as one drawing (SVG): bands between the smallest and
/// largest amount of each report, lines of the single readings before a crash, and a mark for each
/// crash. `scope` is "Application" for the process and "Total" for the machine. Empty when nothing
/// was reported.
std::string memoryPlot(const std::vector<Event>& events, std::string_view scope,
                       const TimeAxis& axis);

}  // namespace qel::support
