#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace qel::utilities {

/// Converts UTF-8 text to a path, whatever the platform's narrow encoding is. The result is a
/// `plainPath`.
std::filesystem::path pathFromUtf8(const std::string& text);

/// The UTF-8 text of a path. On Windows, half of a surrogate pair becomes U+FFFD.
std::string utf8FromPath(const std::filesystem::path& path);

/// On Windows, removes the prefix "\\?\" of a path that names the same file without the prefix.
/// The C library does not find files by a path with the prefix. Other paths stay as they are.
std::filesystem::path plainPath(const std::filesystem::path& path);

/// The `plainPath` that names the same file from every current directory. Throws `qel::exception`
/// if there is none, as for an empty path. Unlike `std::filesystem::absolute`, this function also
/// works on Windows for a path on a server ("\\server\share").
std::filesystem::path absolutePath(const std::filesystem::path& path);

/// The one path of an existing directory, for all spellings of its path. Returns an empty path and
/// sets `error` if the directory cannot be found.
std::filesystem::path canonicalDirectory(const std::filesystem::path& directory,
                                         std::error_code& error);

}  // namespace qel::utilities
