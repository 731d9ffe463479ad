#pragma once

#include <string>
#include <vector>

#include "tools/support/Event.h"

namespace qel::support {

/// The session as one HTML page without scripts or external resources.
std::string htmlReport(const Session& session, const std::vector<Event>& events);

}  // namespace qel::support
