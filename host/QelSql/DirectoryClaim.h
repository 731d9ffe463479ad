#pragma once

#include <filesystem>

namespace qel::db::sql {

/// This process's claim to a directory with databases.
///
/// The first claim of a process locks a file in the directory (`lockFileName`). Further claims
/// share the lock, and the last one releases it. The file itself stays. The system releases the
/// lock when the process dies. Any thread may make and destroy claims.
class DirectoryClaim {
 public:
  /// Whether further claims of this process may exist at the same time.
  enum class Kind { Shared, Exclusive };

  /// Throws `qel::exception`, naming the directory and the reason, when no file can be created in
  /// the directory. Throws it also when another process has claimed the directory, or when a claim
  /// of this process excludes this one.
  explicit DirectoryClaim(const std::filesystem::path& directory, Kind kind = Kind::Shared);
  ~DirectoryClaim();

  DirectoryClaim(const DirectoryClaim&) = delete;
  DirectoryClaim& operator=(const DirectoryClaim&) = delete;

 private:
  std::filesystem::path directory_;  ///< canonical
};

}  // namespace qel::db::sql
