#include "host/QelSql/DirectoryClaim.h"

#include <cerrno>
#include <map>
#include <string>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Mutex.h"
#include "host/QelUtilities/PathText.h"

namespace qel::db::sql {
namespace {

std::string quoted(const std::filesystem::path& path) {
  return '"' + utilities::utf8FromPath(path) + '"';
}

[[noreturn]] void throwUnusable(const std::filesystem::path& directory,
                                const std::error_code& error) {
  throw qel::exception("cannot keep databases in " + quoted(directory) + ": " + error.message());
}

[[noreturn]] void throwInUse(const std::filesystem::path& directory) {
  throw qel::exception(quoted(directory) + " is in use by another instance of the program");
}

[[noreturn]] void throwInUseHere(const std::filesystem::path& directory) {
  throw qel::exception(quoted(directory) + " is in use by this program");
}

class LockFile {
 public:
  explicit LockFile(const std::filesystem::path& directory);
  ~LockFile();

  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

 private:
#ifdef _WIN32
  HANDLE file_;
#else
  int file_;
#endif
};

#ifdef _WIN32

std::error_code lastError() { return {static_cast<int>(GetLastError()), std::system_category()}; }

LockFile::LockFile(const std::filesystem::path& directory)
    : file_(CreateFileW((directory / lockFileName).c_str(), GENERIC_READ | GENERIC_WRITE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                        FILE_ATTRIBUTE_NORMAL, nullptr)) {
  if (file_ == INVALID_HANDLE_VALUE) {
    throwUnusable(directory, lastError());
  }
  OVERLAPPED start{};
  if (!LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start)) {
    const auto error = lastError();
    CloseHandle(file_);
    if (error.value() == ERROR_LOCK_VIOLATION) {
      throwInUse(directory);
    }
    throwUnusable(directory, error);
  }
}

LockFile::~LockFile() { CloseHandle(file_); }

#else

std::error_code lastError() { return {errno, std::system_category()}; }

/// False if the file at the path was deleted, and perhaps created again, after it was opened.
bool isStillAt(const std::filesystem::path& path, int file) {
  struct stat opened {};
  struct stat present {};
  return fstat(file, &opened) == 0 && stat(path.c_str(), &present) == 0 &&
         opened.st_dev == present.st_dev && opened.st_ino == present.st_ino;
}

LockFile::LockFile(const std::filesystem::path& directory) {
  const auto path = directory / lockFileName;
  const auto openAndLock = [&] {
    file_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file_ == -1) {
      throwUnusable(directory, lastError());
    }
    // An existing lock file does not prove that journals can be created in the directory.
    return faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0 &&
           flock(file_, LOCK_EX | LOCK_NB) == 0;
  };
  // Another process may remove the recordings, with the lock file, between opening and locking.
  for (int retries = 100; openAndLock(); --retries) {
    if (isStillAt(path, file_)) {
      return;
    }
    if (retries == 0) {
      errno = ESTALE;
      break;
    }
    close(file_);
  }
  const auto error = lastError();
  close(file_);
  if (error.value() == EWOULDBLOCK) {
    throwInUse(directory);
  }
  throwUnusable(directory, error);
}

LockFile::~LockFile() { close(file_); }

#endif

struct SharedLock {
  explicit SharedLock(const std::filesystem::path& directory) : file(directory) {}

  LockFile file;
  int claims = 0;
  bool isExclusive = false;
};

class Claims {
 public:
  void add(const std::filesystem::path& directory, DirectoryClaim::Kind kind) {
    const bool exclusive = kind == DirectoryClaim::Kind::Exclusive;
    const utilities::MutexLock lock(mutex_);
    const auto [entry, isFirst] = byDirectory_.try_emplace(directory, directory);
    SharedLock& shared = entry->second;
    if (!isFirst && (shared.isExclusive || exclusive)) {
      throwInUseHere(directory);
    }
    shared.isExclusive = exclusive;
    ++shared.claims;
  }

  void remove(const std::filesystem::path& directory) {
    const utilities::MutexLock lock(mutex_);
    const auto entry = byDirectory_.find(directory);
    if (--entry->second.claims == 0) {
      byDirectory_.erase(entry);
    }
  }

 private:
  utilities::Mutex mutex_;
  std::map<std::filesystem::path, SharedLock> byDirectory_ QEL_GUARDED_BY(mutex_);
};

// Never destroyed, because a detached thread may still release a database while the process exits.
Claims& claimsOfProcess() {
  static auto* const claims = new Claims;
  return *claims;
}

}  // namespace

DirectoryClaim::DirectoryClaim(const std::filesystem::path& directory, Kind kind) {
  std::error_code error;
  directory_ = std::filesystem::canonical(directory, error);
  if (error) {
    throwUnusable(directory, error);
  }
  claimsOfProcess().add(directory_, kind);
}

DirectoryClaim::~DirectoryClaim() { claimsOfProcess().remove(directory_); }

}  // namespace qel::db::sql
