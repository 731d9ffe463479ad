#pragma once

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace qel::db::sql {

/// The lock file of a directory (`lockFileName`), open and locked for this process. The destructor
/// releases the lock and keeps the file. The locked file can be deleted.
class LockFile {
 public:
  /// Throws `qel::exception`, which names the directory and the reason, if the directory is locked
  /// by another process, or if files cannot be created in it.
  explicit LockFile(const std::filesystem::path& directory);
  ~LockFile() { close(); }

  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

 private:
  /// The parts that differ between platforms.
  /// @{
  using Handle = std::intptr_t;
  std::error_code open();
  std::error_code tryToCreateFiles() const;
  std::error_code lock() const;
  /// False if the file at the path was deleted, and perhaps created again, after it was opened.
  bool isStillInPlace() const;
  void close();
  static bool isLockedElsewhere(const std::error_code& error);
  /// @}

  std::error_code openAndLock();

  const std::filesystem::path path_;
  Handle file_ = -1;
};

}  // namespace qel::db::sql
