#pragma once

#include <cstdint>
#include <filesystem>

#include "tools/records/Session.h"

namespace qel::support {

/// Copies the session's rows into a new "SupportDatabase.db" in the directory, which is created if
/// it does not exist. The file appears only when it is complete. Returns the number of rows. Throws
/// `tools::InputError` if the directory already has a database, and `qel::exception` if the copy
/// cannot be written.
std::int64_t exportSession(const records::Session& session, const std::filesystem::path& directory);

}  // namespace qel::support
