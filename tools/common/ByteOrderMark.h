#pragma once

#include <string>

namespace qel::tools {

/// Removes the UTF-8 byte order mark with which some editors on Windows begin a file.
inline void removeByteOrderMark(std::string& text) {
  constexpr const char* mark = "\xEF\xBB\xBF";
  if (text.starts_with(mark)) {
    text.erase(0, std::char_traits<char>::length(mark));
  }
}

}  // namespace qel::tools
