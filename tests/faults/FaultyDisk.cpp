#include "tests/faults/FaultyDisk.h"

#include <algorithm>
#include <utility>

namespace qel::test {

/// What SQLite takes for its file; the real one stands behind it.
struct FaultyDisk::File {
  sqlite3_file base;
  FaultyDisk* disk;
};

FaultyDisk& FaultyDisk::of(sqlite3_vfs* vfs) { return *static_cast<FaultyDisk*>(vfs->pAppData); }

FaultyDisk& FaultyDisk::of(sqlite3_file* file) { return *reinterpret_cast<File*>(file)->disk; }

sqlite3_file* FaultyDisk::real(sqlite3_file* file) {
  return reinterpret_cast<sqlite3_file*>(reinterpret_cast<File*>(file) + 1);
}

FaultyDisk::FaultyDisk(std::filesystem::path directory)
    : directory_(std::move(directory)), real_(sqlite3_vfs_find(nullptr)), vfs_(*real_) {
  vfs_.zName = "faulty";
  vfs_.pAppData = this;
  vfs_.szOsFile += static_cast<int>(sizeof(File));
  vfs_.xOpen = open;
  vfs_.xDelete = [](sqlite3_vfs* vfs, const char* name, int synchronise) {
    FaultyDisk& disk = of(vfs);
    return disk.failsNow() ? SQLITE_IOERR_DELETE
                           : disk.real_->xDelete(disk.real_, name, synchronise);
  };
  sqlite3_vfs_register(&vfs_, 1);
}

FaultyDisk::~FaultyDisk() { sqlite3_vfs_unregister(&vfs_); }

sqlite3_io_methods FaultyDisk::methods() {
  sqlite3_io_methods methods{};
  methods.iVersion = 1;  // without shared memory, which only write-ahead logs need
  methods.xClose = [](sqlite3_file* file) { return real(file)->pMethods->xClose(real(file)); };
  methods.xRead = [](sqlite3_file* file, void* data, int amount, sqlite3_int64 offset) {
    return of(file).failsNow() ? SQLITE_IOERR_READ
                               : real(file)->pMethods->xRead(real(file), data, amount, offset);
  };
  methods.xWrite = write;
  methods.xTruncate = [](sqlite3_file* file, sqlite3_int64 size) {
    return of(file).failsNow() ? SQLITE_IOERR_TRUNCATE
                               : real(file)->pMethods->xTruncate(real(file), size);
  };
  methods.xSync = [](sqlite3_file* file, int flags) {
    return of(file).failsNow() ? SQLITE_IOERR_FSYNC
                               : real(file)->pMethods->xSync(real(file), flags);
  };
  methods.xFileSize = [](sqlite3_file* file, sqlite3_int64* size) {
    return real(file)->pMethods->xFileSize(real(file), size);
  };
  methods.xLock = [](sqlite3_file* file, int level) {
    return real(file)->pMethods->xLock(real(file), level);
  };
  methods.xUnlock = [](sqlite3_file* file, int level) {
    return real(file)->pMethods->xUnlock(real(file), level);
  };
  methods.xCheckReservedLock = [](sqlite3_file* file, int* result) {
    return real(file)->pMethods->xCheckReservedLock(real(file), result);
  };
  methods.xFileControl = [](sqlite3_file* file, int operation, void* argument) {
    return real(file)->pMethods->xFileControl(real(file), operation, argument);
  };
  methods.xSectorSize = [](sqlite3_file* file) {
    return real(file)->pMethods->xSectorSize(real(file));
  };
  methods.xDeviceCharacteristics = [](sqlite3_file* file) {
    return real(file)->pMethods->xDeviceCharacteristics(real(file));
  };
  return methods;
}

int FaultyDisk::open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags,
                     int* outFlags) {
  static const sqlite3_io_methods ours = methods();
  FaultyDisk& disk = of(vfs);
  file->pMethods = nullptr;
  if (disk.failsNow()) {
    return SQLITE_CANTOPEN;
  }
  const int code = disk.real_->xOpen(disk.real_, name, real(file), flags, outFlags);
  if (real(file)->pMethods != nullptr) {
    *reinterpret_cast<File*>(file) = {{&ours}, &disk};
  }
  return code;
}

int FaultyDisk::write(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset) {
  FaultyDisk& disk = of(file);
  disk.waitWhileStalled();
  if (disk.failsNow()) {
    return SQLITE_IOERR_WRITE;
  }
  sqlite3_int64 size = 0;
  real(file)->pMethods->xFileSize(real(file), &size);
  if (offset + amount > size && disk.isFull(static_cast<std::uintmax_t>(offset + amount - size))) {
    return SQLITE_FULL;
  }
  return real(file)->pMethods->xWrite(real(file), data, amount, offset);
}

bool FaultyDisk::failsNow() {
  const std::lock_guard lock(mutex_);
  if (callsUntilFault_ > 0 && --callsUntilFault_ == 0) {
    hasFailed_ = true;
    failing_ = persistence_ == Persistence::ForGood;
    return true;
  }
  return failing_;
}

bool FaultyDisk::isFull(std::uintmax_t growth) const {
  const std::lock_guard lock(mutex_);
  if (capacity_ == UINTMAX_MAX) {
    return false;
  }
  std::uintmax_t used = growth;
  for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
    used += entry.file_size();
  }
  return used > capacity_;
}

void FaultyDisk::waitWhileStalled() {
  std::unique_lock lock(mutex_);
  ++stalledWriters_;
  changed_.notify_all();
  changed_.wait(lock, [this] { return !stalled_; });
  --stalledWriters_;
}

void FaultyDisk::failAt(int nthCall, Persistence persistence) {
  const std::lock_guard lock(mutex_);
  callsUntilFault_ = nthCall;
  persistence_ = persistence;
  hasFailed_ = false;
}

bool FaultyDisk::hasFailed() const {
  const std::lock_guard lock(mutex_);
  return hasFailed_;
}

void FaultyDisk::setCapacity(std::uintmax_t bytes) {
  const std::lock_guard lock(mutex_);
  capacity_ = bytes;
}

void FaultyDisk::stall() {
  const std::lock_guard lock(mutex_);
  stalled_ = true;
}

void FaultyDisk::awaitStalledWriter() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stalled_ && stalledWriters_ > 0; });
}

void FaultyDisk::heal() {
  const std::lock_guard lock(mutex_);
  callsUntilFault_ = 0;
  failing_ = false;
  capacity_ = UINTMAX_MAX;
  stalled_ = false;
  changed_.notify_all();
}

}  // namespace qel::test
