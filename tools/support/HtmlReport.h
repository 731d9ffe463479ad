#pragma once

#include <string>
#include <vector>

#include "tools/support/Event.h"

namespace qel::support {

/// The session as one page that needs nothing but itself: no network, no script.
std::string htmlReport(const Session& session, const std::vector<Event>& events);

}  // namespace qel::support
