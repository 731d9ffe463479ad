#pragma once

#include <filesystem>

namespace qel::db::sql {

/// A claim reserves a directory with databases for this process.
///
/// The first claim of a process locks a file in the directory (`lockFileName`). Later claims share
/// the lock, and the last claim releases it. The file itself is not deleted. The system releases
/// the lock if the process terminates. Thread-safe.
class DirectoryClaim {
 public:
  /// Whether this process may have other claims of the directory at the same time.
  enum class Kind { Shared, Exclusive };

  /// Throws `qel::exception`, which names the directory and the reason, if no file can be created
  /// in the directory. Also throws if another process has claimed the directory, or if this process
  /// has another claim and one of the two claims is exclusive. An exclusive claim first waits for
  /// the end of this process's other claims, as long as the thread's patience lasts
  /// (`utilities::Patience`), but at most one hour. The exit deadline does not end this wait.
  explicit DirectoryClaim(const std::filesystem::path& directory, Kind kind = Kind::Shared);
  ~DirectoryClaim();

  DirectoryClaim(const DirectoryClaim&) = delete;
  DirectoryClaim& operator=(const DirectoryClaim&) = delete;

 private:
  std::filesystem::path directory_;  ///< canonical path
};

}  // namespace qel::db::sql
