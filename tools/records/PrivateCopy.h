#pragma once

#include <filesystem>

#include "tools/common/DelayedInterruption.h"

namespace qel::records {

/// A new directory that only its owner can read. The destructor removes the directory with its
/// content, or warns that it cannot. Requests to end the program wait until then, so they do not
/// leave the directory behind.
class PrivateDirectory {
 public:
  /// Creates the directory in `parent`. Throws `qel::exception` with the reason if that fails.
  explicit PrivateDirectory(const std::filesystem::path& parent);
  ~PrivateDirectory();

  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  const tools::DelayedInterruption delay_;
  const std::filesystem::path path_;
};

/// A copy of a database file and its journals in the system's temporary directory. Its files must
/// be closed when the destructor deletes them, because Windows does not delete open files.
class PrivateCopy {
 public:
  /// Throws `qel::exception` if the file cannot be copied. A journal that does not exist is
  /// skipped.
  explicit PrivateCopy(const std::filesystem::path& file);

  const std::filesystem::path& file() const { return file_; }

 private:
  const PrivateDirectory directory_;
  const std::filesystem::path file_;
};

}  // namespace qel::records
