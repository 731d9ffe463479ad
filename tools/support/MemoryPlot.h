#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/support/Event.h"
#include "tools/support/TimeAxis.h"

namespace qel::support {

/// Template data of the memory plots, "program" and "machine". A plot without reports is absent;
/// the result is false if both are. A plot has a band for each report, between the smallest and the
/// largest amount. It has a line of the readings before a crash, and a mark for each crash.
kainjow::mustache::data memoryPlots(const std::vector<Event>& events, const TimeAxis& axis);

}  // namespace qel::support
