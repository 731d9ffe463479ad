#include "tools/support/PrivateCopy.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

namespace qel::support {

PrivateDirectory::PrivateDirectory(const std::filesystem::path& parent) {
  std::string pattern = utilities::utf8FromPath(parent / ".qel-support-XXXXXX");
  if (mkdtemp(pattern.data()) == nullptr) {
    throw qel::exception("cannot write in " + utilities::utf8FromPath(parent) + ": " +
                         std::system_category().message(errno));
  }
  path_ = utilities::pathFromUtf8(pattern);
}

PrivateDirectory::~PrivateDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

PrivateCopy::PrivateCopy(const std::filesystem::path& file)
    : directory_(std::filesystem::temp_directory_path()),
      file_(directory_.path() / file.filename()) {
  try {
    for (const char* const suffix : {"", "-journal", "-wal"}) {
      const auto original = std::filesystem::path(file) += suffix;
      if (std::filesystem::exists(original)) {
        const auto copy = std::filesystem::path(file_) += suffix;
        std::filesystem::copy_file(original, copy);
        // What lies in a place that is not to be written is often not writable itself.
        std::filesystem::permissions(copy, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
      }
    }
  } catch (const std::filesystem::filesystem_error& failure) {
    throw qel::exception("cannot make a private copy of " + utilities::utf8FromPath(file) + ": " +
                         failure.code().message());
  }
}

}  // namespace qel::support
