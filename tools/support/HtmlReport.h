#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tools/support/Event.h"

namespace qel::support {

/// The session as one page that needs nothing but itself: no network, no script.
std::string htmlReport(const Session& session, const std::vector<Event>& events);

/// Writes a new file for its owner alone. Throws `tools::InputError` when there is one already, and
/// `qel::exception` when it cannot be written.
void writeNewFile(const std::filesystem::path& file, const std::string& content);

}  // namespace qel::support
