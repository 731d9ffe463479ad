#pragma once

#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/support/Event.h"
#include "tools/support/TimeAxis.h"

namespace qel::support {

/// The drawing of a session's events: a lane for each category, a stroke for each event.
kainjow::mustache::data categoryLanes(const std::vector<Event>& events, const TimeAxis& axis);

}  // namespace qel::support
