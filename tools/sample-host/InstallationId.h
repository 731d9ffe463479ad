#pragma once

#include <filesystem>
#include <string>

namespace qel::samplehost {

/// Reads the installation ID of a directory: the first line of its file "installation-id". If the
/// file is missing or empty, writes a new GUID to it. Throws `qel::exception` if writing fails.
std::string installationIdOf(const std::filesystem::path& directory);

}  // namespace qel::samplehost
