#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace qel::test {

/// A new directory, removed with its contents at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = std::filesystem::temp_directory_path() / "qel-test-XXXXXX";
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
  std::string text() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace qel::test
