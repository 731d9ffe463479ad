#pragma once

#include <filesystem>
#include <string>

namespace qel::utilities {

/// Converts UTF-8 text to a path, whatever the platform's narrow encoding is.
inline std::filesystem::path pathFromUtf8(const std::string& text) {
  return {std::u8string(text.begin(), text.end())};
}

/// The UTF-8 text of a path.
inline std::string utf8FromPath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace qel::utilities
