#pragma once

#include <csignal>
#include <filesystem>

namespace qel::support {

/// A new directory for its owner alone, removed with all that is in it at the end. In a program of
/// one thread SIGINT, SIGTERM and SIGHUP wait until then: only SIGKILL or a crash leaves it behind.
class PrivateDirectory {
 public:
  /// Makes it in `parent`. Throws `qel::exception` with the reason.
  explicit PrivateDirectory(const std::filesystem::path& parent);
  ~PrivateDirectory();

  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  sigset_t signalsBefore_;
};

/// A copy of a database file with its journals in the system's place for temporary files. Whoever
/// has opened the file can go on reading it after this object has removed its name.
class PrivateCopy {
 public:
  /// Throws `qel::exception` when the file cannot be copied.
  explicit PrivateCopy(const std::filesystem::path& file);

  const std::filesystem::path& file() const { return file_; }

 private:
  const PrivateDirectory directory_;
  const std::filesystem::path file_;
};

}  // namespace qel::support
