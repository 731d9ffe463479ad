#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/records/Event.h"
#include "tools/report/TimeAxis.h"

namespace qel::report {

/// Template data of the timeline: a list of lanes, one for each category, with a mark for each
/// event.
kainjow::mustache::data categoryLanes(const std::vector<records::Event>& events,
                                      const TimeAxis& axis);

/// Template data of the vertical lines at the crashes: a list of "x" and "label". If several
/// crashes are close together, only the first of them gets a label.
kainjow::mustache::data crashMarks(const std::vector<records::Event>& events, const TimeAxis& axis);

}  // namespace qel::report
