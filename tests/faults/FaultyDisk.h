#pragma once

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>

#include <sqlite3.h>

namespace qel::test {

/// Stands between SQLite and the files, for all databases that are opened while it lives, and makes
/// what SQLite asks for fail, stall or run out of space. Databases opened through it must be closed
/// before it goes. Any thread.
class FaultyDisk {
 public:
  enum class Persistence { Once, ForGood };

  /// `directory` is the one whose files fill the disk.
  explicit FaultyDisk(std::filesystem::path directory);
  FaultyDisk(const FaultyDisk&) = delete;
  FaultyDisk& operator=(const FaultyDisk&) = delete;
  ~FaultyDisk();

  /// The nth call from now that reads, writes, synchronises, truncates, opens or deletes fails,
  /// and with it those behind it if that is for good.
  void failAt(int nthCall, Persistence persistence);
  /// Whether a call has failed since then.
  bool hasFailed() const;
  /// Writing fails that would let the files outgrow this many bytes in all.
  void setCapacity(std::uintmax_t bytes);
  /// From now on whoever writes waits.
  void stall();
  /// Waits until somebody does.
  void awaitStalledWriter();
  /// No more faults of any kind.
  void heal();

 private:
  struct File;

  static FaultyDisk& of(sqlite3_vfs* vfs);
  static FaultyDisk& of(sqlite3_file* file);
  static sqlite3_file* real(sqlite3_file* file);
  static sqlite3_io_methods methods();
  static int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags);
  static int write(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset);

  /// Counts the call in; true when it is to fail.
  bool failsNow();
  bool isFull(std::uintmax_t growth) const;
  void waitWhileStalled();

  const std::filesystem::path directory_;
  sqlite3_vfs* const real_;
  sqlite3_vfs vfs_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by mutex_.
  int callsUntilFault_ = 0;  ///< none is due at 0
  Persistence persistence_ = Persistence::Once;
  bool failing_ = false;
  bool hasFailed_ = false;
  std::uintmax_t capacity_ = UINTMAX_MAX;
  bool stalled_ = false;
  int stalledWriters_ = 0;
};

}  // namespace qel::test
