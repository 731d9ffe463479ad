#include "host/QelUtilities/SystemError.h"

#include <cerrno>

namespace qel::utilities {

std::error_code lastSystemError() { return {errno, std::system_category()}; }

std::string systemMessage(const std::error_code& error) { return error.message(); }

std::string utf8FromMessage(std::string message) { return message; }

}  // namespace qel::utilities
