#pragma once

#include <filesystem>
#include <iosfwd>

namespace qel::support {

/// Removes all recordings of the directory and prints each removed file to `output`. Asks on the
/// terminal first, unless `asked`. Returns whether all files are gone. Throws `tools::InputError`
/// if there is no such directory or no terminal, and `qel::exception` if a program uses it.
bool purge(const std::filesystem::path& directory, bool asked, std::ostream& output);

}  // namespace qel::support
