#include "tools/support/PrivateCopy.h"

#include <string>
#include <system_error>

#include "host/QelId/Guid.h"
#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::support {
namespace {

std::filesystem::path placeOfCopies() {
  std::error_code error;
  auto place = std::filesystem::temp_directory_path(error);
  if (error) {
    throw qel::exception(
        "there is no place for a private copy: the directory for temporary files does not exist");
  }
  return place;
}

}  // namespace

PrivateDirectory::PrivateDirectory(const std::filesystem::path& parent)
    : path_(parent / (".qel-support-" + qel::Guid::create().toString(false))) {
  std::error_code error;
  if (!utilities::createDirectoryForOwnerAlone(path_, error)) {
    throw qel::exception("cannot write in " + utilities::utf8FromPath(parent) + ": " +
                         utilities::systemMessage(error));
  }
}

PrivateDirectory::~PrivateDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

PrivateCopy::PrivateCopy(const std::filesystem::path& file)
    : directory_(placeOfCopies()), file_(directory_.path() / file.filename()) {
  try {
    for (const char* const suffix : {"", db::sql::journalSuffix, db::sql::walSuffix}) {
      const auto original = std::filesystem::path(file) += suffix;
      if (std::filesystem::exists(original)) {
        const auto copy = std::filesystem::path(file_) += suffix;
        std::filesystem::copy_file(original, copy);
        // A file in a read-only directory is often read-only itself.
        std::filesystem::permissions(copy, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
      }
    }
  } catch (const std::filesystem::filesystem_error& failure) {
    throw qel::exception("cannot make a private copy of " + utilities::utf8FromPath(file) + ": " +
                         utilities::systemMessage(failure.code()));
  }
}

}  // namespace qel::support
