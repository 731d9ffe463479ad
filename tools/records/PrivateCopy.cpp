#include "tools/records/PrivateCopy.h"

#include <chrono>
#include <iostream>
#include <string>
#include <system_error>
#include <thread>

#include "host/QelId/Guid.h"
#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::records {
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
  std::error_code error;
  // On Windows, a virus scanner may hold a new file for a moment.
  for (int attempt = 0; attempt < 20; ++attempt) {
    std::filesystem::remove_all(path_, error);
    if (!error) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  std::cerr << "qel-support: cannot delete " << utilities::utf8FromPath(path_)
            << ", which contains recordings: " << utilities::systemMessage(error) << '\n';
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

}  // namespace qel::records
