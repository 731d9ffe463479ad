#pragma once

#include <string>
#include <vector>

#include "tools/support/Event.h"
#include "tools/support/TimeAxis.h"

namespace qel::support {

/// The session's events as one drawing (SVG): a lane for each category, a stroke for each event.
std::string categoryLanes(const std::vector<Event>& events, const TimeAxis& axis);

}  // namespace qel::support
