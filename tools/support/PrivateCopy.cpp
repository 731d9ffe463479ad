#include "tools/support/PrivateCopy.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

namespace qel::support {
namespace {

std::filesystem::path placeOfCopies() {
  std::error_code error;
  auto place = std::filesystem::temp_directory_path(error);
  if (error) {
    throw qel::exception("there is no place for a private copy: TMPDIR names no directory");
  }
  return place;
}

}  // namespace

PrivateDirectory::PrivateDirectory(const std::filesystem::path& parent) {
  std::string pattern = utilities::utf8FromPath(parent / ".qel-support-XXXXXX");
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaddset(&ending, signal);
  }
  pthread_sigmask(SIG_BLOCK, &ending, &signalsBefore_);
  if (mkdtemp(pattern.data()) == nullptr) {
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &signalsBefore_, nullptr);
    throw qel::exception("cannot write in " + utilities::utf8FromPath(parent) + ": " +
                         std::system_category().message(error));
  }
  path_ = utilities::pathFromUtf8(pattern);
}

PrivateDirectory::~PrivateDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  pthread_sigmask(SIG_SETMASK, &signalsBefore_, nullptr);
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
                         failure.code().message());
  }
}

}  // namespace qel::support
