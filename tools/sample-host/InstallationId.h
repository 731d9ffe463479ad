#pragma once

#include <filesystem>
#include <string>

namespace qel::samplehost {

/// The directory's installation id: the first line of its file "installation-id", which is made
/// with a new GUID when it is not there or empty. Throws `qel::exception` when it cannot be made.
std::string installationIdOf(const std::filesystem::path& directory);

}  // namespace qel::samplehost
