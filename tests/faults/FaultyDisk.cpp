#include "tests/faults/FaultyDisk.h"

#include <atomic>
#include <cerrno>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qel::test {
namespace {

std::atomic<int> callsUntilFault{-1};
std::atomic<DiskFault> plannedFault;
std::atomic<bool> hasFailed{false};

/// Counts the call in; true when it is to fail.
bool fails(bool isWrite) {
  callsUntilFault -= callsUntilFault > 0 ? 1 : 0;
  if (callsUntilFault != 0 || (plannedFault == DiskFault::Full && !isWrite)) {
    return false;
  }
  if (plannedFault == DiskFault::Once) {
    callsUntilFault = -1;
  }
  hasFailed = true;
  // As of a disk in a network: for EIO when it reads SQLite calls the file corrupt.
  errno = plannedFault == DiskFault::Full ? ENOSPC : ETIMEDOUT;
  return true;
}

int openOrFail(const char* file, int flags, int mode) {
  return fails(false) ? -1 : open(file, flags, mode);
}

ssize_t readOrFail(int file, void* data, std::size_t size, off64_t offset) {
  return fails(false) ? -1 : pread64(file, data, size, offset);
}

ssize_t writeOrFail(int file, const void* data, std::size_t size, off64_t offset) {
  return fails(true) ? -1 : pwrite64(file, data, size, offset);
}

int truncateOrFail(int file, off64_t size) { return fails(false) ? -1 : ftruncate64(file, size); }

int deleteOrFail(const char* file) { return fails(false) ? -1 : unlink(file); }

template <typename Call>
bool replace(const char* name, Call* call) {
  auto* const system = sqlite3_vfs_find("unix");
  return system->xSetSystemCall(system, name, reinterpret_cast<sqlite3_syscall_ptr>(call)) ==
         SQLITE_OK;
}

const bool isReplaced = replace("open", openOrFail) && replace("pread64", readOrFail) &&
                        replace("pwrite64", writeOrFail) && replace("ftruncate", truncateOrFail) &&
                        replace("unlink", deleteOrFail);

}  // namespace

void failDiskAt(int nthCall, DiskFault fault) {
  hasFailed = !isReplaced;
  plannedFault = fault;
  callsUntilFault = nthCall;
}

bool healDisk() {
  callsUntilFault = -1;
  return hasFailed;
}

}  // namespace qel::test

/// In place of the system's, which SQLite lets nobody replace.
extern "C" int fdatasync(int file) {
  return qel::test::fails(false) ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}
