#pragma once

#include <filesystem>
#include <fstream>

namespace qel::test {

inline std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// Returns the file.
inline std::filesystem::path write(const std::filesystem::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
  return file;
}

}  // namespace qel::test
