#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace qel::test {

/// From now on temporary directories lie in memory, where there is such a place: for tests that
/// write so often that a disk would take its time.
inline void keepTemporaryDirectoriesInMemory() {
  if (std::filesystem::is_directory("/dev/shm")) {
    setenv("TMPDIR", "/dev/shm", 1);
  }
}

/// A new empty directory, removed with all that is in it at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qel-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("cannot make a temporary directory " + pattern);
    }
    path_ = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string text() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace qel::test
