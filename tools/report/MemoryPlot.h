#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/records/Event.h"
#include "tools/report/TimeAxis.h"

namespace qel::report {

/// Template data of the memory plots, "program" and "machine". A plot is absent if it has no
/// reports; the result is false if both plots are absent. A plot has a band for each report, from
/// the smallest to the largest amount, and a line through the readings before each crash.
kainjow::mustache::data memoryPlots(const std::vector<records::Event>& events,
                                    const TimeAxis& axis);

}  // namespace qel::report
