#include "host/QelSql/LockFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/QelUtilities/SystemError.h"

namespace qel::db::sql {
namespace {

std::error_code errorIf(bool hasFailed) {
  return hasFailed ? utilities::lastSystemError() : std::error_code();
}

}  // namespace

std::error_code LockFile::open() {
  file_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  return errorIf(file_ == -1);
}

std::error_code LockFile::tryToCreateFiles() const {
  return errorIf(faccessat(AT_FDCWD, path_.parent_path().c_str(), W_OK | X_OK, AT_EACCESS) != 0);
}

std::error_code LockFile::lock() const {
  return errorIf(flock(static_cast<int>(file_), LOCK_EX | LOCK_NB) != 0);
}

bool LockFile::isStillInPlace() const {
  struct stat opened {};
  struct stat present {};
  return fstat(static_cast<int>(file_), &opened) == 0 && stat(path_.c_str(), &present) == 0 &&
         opened.st_dev == present.st_dev && opened.st_ino == present.st_ino;
}

void LockFile::close() {
  if (file_ != -1) {
    ::close(static_cast<int>(file_));
    file_ = -1;
  }
}

bool LockFile::isLockedElsewhere(const std::error_code& error) {
  return error.value() == EWOULDBLOCK;
}

}  // namespace qel::db::sql
