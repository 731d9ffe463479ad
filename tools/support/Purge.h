#pragma once

#include <filesystem>
#include <iosfwd>

namespace qel::support {

/// Removes all recordings in the directory and prints each removed file to `output`. Asks for
/// confirmation on the terminal first, unless `asked` is true. Returns whether no recordings are
/// left. Throws `tools::InputError` if there is no such directory or no terminal to ask on. Throws
/// `qel::exception` if a program uses the directory.
bool purge(const std::filesystem::path& directory, bool asked, std::ostream& output);

}  // namespace qel::support
