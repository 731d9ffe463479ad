#pragma once

#include <string>
#include <vector>

#include "tools/records/Event.h"

namespace qel::report {

/// The session as one HTML page without scripts or external resources. The page has the remarks
/// about what could not be read. `list` is the address of a page that lists sessions; without it
/// there is no link.
std::string htmlReport(const records::Session& session, const std::vector<records::Event>& events,
                       const std::vector<std::string>& remarks, const std::string& list = "");

}  // namespace qel::report
