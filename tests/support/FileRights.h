#pragma once

#include <filesystem>

namespace qel::test {

/// Whether only the owner, and the system itself, may access the file or directory.
bool isForOwnerAlone(const std::filesystem::path& file);

}  // namespace qel::test
