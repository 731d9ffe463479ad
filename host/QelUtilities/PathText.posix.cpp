#include "host/QelUtilities/PathText.h"

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::utilities {

std::string utf8FromPath(const std::filesystem::path& path) { return path.native(); }

std::filesystem::path plainPath(const std::filesystem::path& path) { return path; }

std::filesystem::path absolutePath(const std::filesystem::path& path) {
  std::error_code error;
  auto absolute = std::filesystem::absolute(path, error);
  if (error) {
    throw qel::exception("\"" + utf8FromPath(path) + "\" is no path: " + systemMessage(error));
  }
  return absolute;
}

std::filesystem::path canonicalDirectory(const std::filesystem::path& directory,
                                         std::error_code& error) {
  return std::filesystem::canonical(directory, error);
}

}  // namespace qel::utilities
