#pragma once

#include <filesystem>
#include <string>

namespace qel::support {

/// Writes a new file for its owner alone. Throws `tools::InputError` when there is one already, and
/// `qel::exception` when it cannot be written.
void writeNewFile(const std::filesystem::path& file, const std::string& content);

}  // namespace qel::support
