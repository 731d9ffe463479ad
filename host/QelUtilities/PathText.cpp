#include "host/QelUtilities/PathText.h"

namespace qel::utilities {

std::filesystem::path pathFromUtf8(const std::string& text) {
  return plainPath(std::u8string(text.begin(), text.end()));
}

std::string utf8FromPath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace qel::utilities
