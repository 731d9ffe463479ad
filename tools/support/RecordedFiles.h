#pragma once

#include <filesystem>
#include <vector>

namespace qel::support {

/// Corrupt database files that the client has set aside in the directory, with their journals.
std::vector<std::filesystem::path> filesSetAside(const std::filesystem::path& directory);

/// Every file of the directory that can hold what a client has recorded, by name: databases,
/// journals, files set aside, the lock file, and the log files of the host program, in which
/// refused packages stand whole.
std::vector<std::filesystem::path> recordedFiles(const std::filesystem::path& directory);

}  // namespace qel::support
