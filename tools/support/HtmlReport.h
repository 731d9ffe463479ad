#pragma once

#include <string>
#include <vector>

#include "tools/records/Event.h"

namespace qel::support {

/// The session as one HTML page without scripts or external resources.
std::string htmlReport(const records::Session& session, const std::vector<records::Event>& events);

}  // namespace qel::support
