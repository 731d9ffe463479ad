#pragma once

#include <filesystem>

namespace qel::support {

/// A new directory for this program alone, removed with all that is in it at the end.
class PrivateDirectory {
 public:
  /// Makes it in `parent`. Throws `qel::exception` with the reason.
  explicit PrivateDirectory(const std::filesystem::path& parent);
  ~PrivateDirectory();

  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// From now on SIGINT, SIGTERM and SIGHUP, unless they are ignored, remove all such directories
  /// before they end the program. SIGPIPE waits until `diesOfClosedPipe` lets it through. To be
  /// called once, before any thread is started.
  static void removeAllOnSignals();

  /// Ends the program, as SIGPIPE does, if something was written to a pipe that nobody reads. To be
  /// called when no such directory is left.
  static void diesOfClosedPipe();

 private:
  std::filesystem::path path_;
};

/// A copy of a database file with its journals in the system's place for temporary files, removed
/// at the end.
class PrivateCopy {
 public:
  /// Throws `qel::exception` when the file cannot be copied.
  explicit PrivateCopy(const std::filesystem::path& file);

  const std::filesystem::path& file() const { return file_; }

 private:
  PrivateDirectory directory_;
  std::filesystem::path file_;
};

}  // namespace qel::support
