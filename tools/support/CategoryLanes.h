#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/records/Event.h"
#include "tools/support/TimeAxis.h"

namespace qel::support {

/// Template data of the timeline: a lane for each category, with a mark for each event.
kainjow::mustache::data categoryLanes(const std::vector<records::Event>& events,
                                      const TimeAxis& axis);

}  // namespace qel::support
