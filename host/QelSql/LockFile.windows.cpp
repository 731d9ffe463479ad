#include "host/QelSql/LockFile.h"

#include <atomic>
#include <string>

#include <windows.h>

#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::db::sql {
namespace {

/// Other handles may delete the file, as those of `removeRecordings` do while it is locked.
constexpr DWORD sharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// A new name for each trial, because a virus scanner may delay the deletion of the last file.
std::wstring newTrialFileName() {
  static std::atomic<unsigned> trials{0};
  return L"Databases.trial-" + std::to_wstring(GetCurrentProcessId()) + L'-' +
         std::to_wstring(++trials);
}

std::error_code errorIf(bool hasFailed) {
  return hasFailed ? utilities::lastSystemError() : std::error_code();
}

HANDLE handleOf(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

bool isSameFile(HANDLE left, HANDLE right) {
  BY_HANDLE_FILE_INFORMATION a{};
  BY_HANDLE_FILE_INFORMATION b{};
  return GetFileInformationByHandle(left, &a) != 0 && GetFileInformationByHandle(right, &b) != 0 &&
         a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
         a.nFileIndexLow == b.nFileIndexLow;
}

}  // namespace

std::error_code LockFile::open() {
  std::error_code error;
  utilities::createForOwnerAlone(path_, error);
  if (error) {
    return error;
  }
  // Not created here, because the file would inherit its access rights.
  file_ =
      reinterpret_cast<Handle>(CreateFileW(path_.c_str(), GENERIC_READ | GENERIC_WRITE, sharedByAll,
                                           nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  return errorIf(handleOf(file_) == INVALID_HANDLE_VALUE);
}

/// The access rights of a directory cannot be evaluated with certainty, so an empty file is
/// created. It is deleted when it is closed, also by the end of the process.
std::error_code LockFile::tryToCreateFiles() const {
  const HANDLE trial = CreateFileW((path_.parent_path() / newTrialFileName()).c_str(),
                                   GENERIC_WRITE | DELETE, sharedByAll, nullptr, OPEN_ALWAYS,
                                   FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  const auto error = errorIf(trial == INVALID_HANDLE_VALUE);
  if (!error) {
    CloseHandle(trial);
  }
  return error;
}

std::error_code LockFile::lock() const {
  OVERLAPPED start{};
  return errorIf(LockFileEx(handleOf(file_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0,
                            1, 0, &start) == 0);
}

bool LockFile::isStillInPlace() const {
  const HANDLE present = CreateFileW(path_.c_str(), FILE_READ_ATTRIBUTES, sharedByAll, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (present == INVALID_HANDLE_VALUE) {
    return false;
  }
  const bool isSame = isSameFile(handleOf(file_), present);
  CloseHandle(present);
  return isSame;
}

void LockFile::close() {
  if (handleOf(file_) != INVALID_HANDLE_VALUE) {
    CloseHandle(handleOf(file_));
    file_ = reinterpret_cast<Handle>(INVALID_HANDLE_VALUE);
  }
}

bool LockFile::isLockedElsewhere(const std::error_code& error) {
  return error.value() == ERROR_LOCK_VIOLATION;
}

}  // namespace qel::db::sql
