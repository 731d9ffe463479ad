#pragma once

#include <filesystem>
#include <string>

namespace qel::support {

/// Writes a new file, with the permissions that the umask leaves. Throws `tools::InputError` when
/// there is one already, and `qel::exception` when it cannot be written.
void writeNewFile(const std::filesystem::path& file, const std::string& content);

}  // namespace qel::support
