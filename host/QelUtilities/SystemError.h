#pragma once

#include <string>
#include <system_error>

namespace qel::utilities {

/// The error of the system call that the calling thread has just made: `errno`, or `GetLastError()`
/// on Windows.
std::error_code lastSystemError();

/// The system's description of an error, in UTF-8. On Windows it is in English if the system has
/// English texts, and has no full stop and no line end.
std::string systemMessage(const std::error_code& error);

/// Converts a message of a library that words system errors itself, such as libcurl, to UTF-8. On
/// Windows such a message may be in the system's code page. Elsewhere it is returned unchanged.
std::string utf8FromMessage(std::string message);

}  // namespace qel::utilities
