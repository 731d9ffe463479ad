#pragma once

#include <filesystem>
#include <system_error>

/// Creates files and directories that only the user of this process may access. The system's
/// administrators keep the access that the platform always gives them.
namespace qel::utilities {

/// Creates an empty file, unless something with this name exists. An existing file stays as it is,
/// and a symbolic link is not followed.
///
/// Returns true if the file was created. Returns false if it existed, in which case `error` is
/// cleared, or if it cannot be created, in which case `error` is the reason.
bool createForOwnerAlone(const std::filesystem::path& file, std::error_code& error);

/// Like `createForOwnerAlone`, for a directory whose parent exists. On Windows, files that are
/// created in the directory later inherit its access rights.
bool createDirectoryForOwnerAlone(const std::filesystem::path& directory, std::error_code& error);

}  // namespace qel::utilities
