#pragma once

#include <filesystem>

namespace qel::db::sql {

/// This process's claim to a directory with databases. The first claim of a process takes a lock
/// file in the directory, "Databases.lock", which every further one shares and the last one lets go
/// of; the file itself stays. The system lets go of it too when the process dies. Any thread may
/// claim and let go.
class DirectoryClaim {
 public:
  static constexpr const char* lockFileName = "Databases.lock";

  /// Throws `qel::exception`, naming the directory and the reason, when another process has claimed
  /// the directory, or when no file can be created in it.
  explicit DirectoryClaim(const std::filesystem::path& directory);
  ~DirectoryClaim();

  DirectoryClaim(const DirectoryClaim&) = delete;
  DirectoryClaim& operator=(const DirectoryClaim&) = delete;

 private:
  std::filesystem::path directory_;  ///< canonical
};

}  // namespace qel::db::sql
