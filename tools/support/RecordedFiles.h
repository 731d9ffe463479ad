#pragma once

#include <filesystem>
#include <vector>

namespace qel::support {

/// Corrupt database files that the client has set aside in the directory, with their journals.
std::vector<std::filesystem::path> filesSetAside(const std::filesystem::path& directory);

/// Every file of the directory that can hold what a client has recorded, by name: databases,
/// journals, files set aside, the lock file, and of `qel-sample-host` its log files, in which
/// refused packages stand whole, and the installation's id.
std::vector<std::filesystem::path> recordedFiles(const std::filesystem::path& directory);

}  // namespace qel::support
