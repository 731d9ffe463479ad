#pragma once

#include <filesystem>
#include <string>

namespace qel::support {

/// Writes a new file that only its owner may read. Throws `tools::InputError` if the file exists,
/// and `qel::exception` if it cannot be written.
void writeNewFile(const std::filesystem::path& file, const std::string& content);

}  // namespace qel::support
