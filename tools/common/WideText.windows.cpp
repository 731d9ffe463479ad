#include "tools/common/WideText.h"

#include <windows.h>

namespace qel::tools {

std::string utf8FromWide(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  const auto convert = [&](char* output, int size) {
    return WideCharToMultiByte(CP_UTF8, 0, text.data(), length, output, size, nullptr, nullptr);
  };
  std::string converted(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  convert(converted.data(), static_cast<int>(converted.size()));
  return converted;
}

}  // namespace qel::tools
