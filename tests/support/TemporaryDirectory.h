#pragma once

#include <filesystem>
#include <random>

namespace qel::test {

/// A new directory for this user alone, removed with its contents at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() /
              ("qel-test-" + std::to_string(random()) + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all);
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /// The path in UTF-8.
  std::string text() const {
    const std::u8string text = path_.u8string();
    return {text.begin(), text.end()};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace qel::test
