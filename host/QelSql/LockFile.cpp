#include "host/QelSql/LockFile.h"

#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::db::sql {

LockFile::LockFile(const std::filesystem::path& directory) : path_(directory / lockFileName) {
  const std::error_code error = openAndLock();
  if (!error) {
    return;
  }
  close();
  const auto name = '"' + utilities::utf8FromPath(directory) + '"';
  throw qel::exception(isLockedElsewhere(error)
                           ? name + " is in use by another instance of the program"
                           : "cannot keep databases in " + name + ": " +
                                 utilities::systemMessage(error));
}

/// Another process may remove the recordings, with the lock file, before it is opened or locked.
std::error_code LockFile::openAndLock() {
  std::error_code error;
  for (int attempts = 100; attempts > 0; --attempts) {
    error = open();
    if (!error) {
      // An existing lock file does not prove that journals can be created in the directory.
      error = tryToCreateFiles();
    }
    if (!error) {
      error = lock();
    }
    const bool isRemoved =
        error ? error == std::errc::no_such_file_or_directory : !isStillInPlace();
    if (!isRemoved) {
      return error;
    }
    close();
  }
  return error ? error : std::make_error_code(std::errc::device_or_resource_busy);
}

}  // namespace qel::db::sql
