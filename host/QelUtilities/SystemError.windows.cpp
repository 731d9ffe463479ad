#include "host/QelUtilities/SystemError.h"

#include <array>
#include <string_view>

#include <windows.h>

#include "host/QelUtilities/PathText.h"

namespace qel::utilities {
namespace {

/// Empty if the system has no text in this language. Language 0 stands for the user's preferences.
std::wstring textOf(int error, DWORD language) {
  constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  std::array<wchar_t, 1024> text{};
  const DWORD length = FormatMessageW(flags, nullptr, static_cast<DWORD>(error), language,
                                      text.data(), static_cast<DWORD>(text.size()), nullptr);
  const std::wstring_view all(text.data(), length);
  return std::wstring(all.substr(0, all.find_last_not_of(L"\r\n. ") + 1));
}

/// Empty if the flags forbid invalid bytes and there are some.
std::wstring decoded(const std::string& bytes, UINT codePage, DWORD flags) {
  const auto size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), L'\0');
  const int length = MultiByteToWideChar(codePage, flags, bytes.data(), size, text.data(), size);
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace

std::error_code lastSystemError() {
  return {static_cast<int>(GetLastError()), std::system_category()};
}

std::string systemMessage(const std::error_code& error) {
  if (error.category() != std::system_category()) {
    return error.message();
  }
  for (const DWORD language : {DWORD{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}, DWORD{0}}) {
    if (const auto text = textOf(error.value(), language); !text.empty()) {
      return utf8FromPath(text);
    }
  }
  return "error " + std::to_string(error.value());
}

std::string utf8FromMessage(std::string message) {
  return message.empty() || !decoded(message, CP_UTF8, MB_ERR_INVALID_CHARS).empty()
             ? message
             : utf8FromPath(decoded(message, CP_ACP, 0));
}

}  // namespace qel::utilities
