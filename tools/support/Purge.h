#pragma once

#include <filesystem>
#include <iosfwd>

namespace qel::support {

/// Removes everything recorded in the directory and tells so on `output`. Asks on the terminal
/// first unless `asked` already. Whether everything is gone. Throws `tools::InputError` when there
/// is no such directory or nobody to ask, and `qel::exception` when another program uses it.
bool purge(const std::filesystem::path& directory, bool asked, std::ostream& output);

}  // namespace qel::support
