#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/support/Event.h"
#include "tools/support/TimeAxis.h"

namespace qel::support {

/// The drawings of the memory in use, "program" and "machine", as far as it was reported; false
/// when none was. Each holds bands between the smallest and largest amount of each report, lines of
/// the single readings before a crash, and a mark for each crash.
kainjow::mustache::data memoryPlots(const std::vector<Event>& events, const TimeAxis& axis);

}  // namespace qel::support
