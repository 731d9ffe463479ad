#pragma once

#include <filesystem>

namespace qel::db::sql {

/// This process's claim to a directory with databases. The first claim of a process locks the file
/// "Databases.lock" in the directory. Further claims share the lock, and the last one releases it.
/// The file itself stays. The system releases the lock when the process dies. Any thread may claim
/// and release.
class DirectoryClaim {
 public:
  static constexpr const char* lockFileName = "Databases.lock";

  /// Throws `qel::exception`, which names the directory and the reason, if another process has
  /// claimed the directory, or if no file can be created in it.
  explicit DirectoryClaim(const std::filesystem::path& directory);
  ~DirectoryClaim();

  DirectoryClaim(const DirectoryClaim&) = delete;
  DirectoryClaim& operator=(const DirectoryClaim&) = delete;

 private:
  std::filesystem::path directory_;  ///< canonical
};

}  // namespace qel::db::sql
