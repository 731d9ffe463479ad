#include "host/QelUtilities/PathText.h"

#include <memory>
#include <string>
#include <string_view>

#include <windows.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::utilities {
namespace {

/// Calls `fill(buffer, size)` with a buffer that is large enough. `fill` returns the length of the
/// text, or the size that the text needs, or 0 if it fails.
template <typename Fill>
std::wstring textFrom(const Fill& fill) {
  std::wstring text(MAX_PATH, L'\0');
  DWORD length = fill(text.data(), static_cast<DWORD>(text.size()));
  while (length >= text.size()) {
    text.resize(length);
    length = fill(text.data(), length);
  }
  text.resize(length);
  return text;
}

/// Also removes trailing dots and blanks, and resolves "." and "..".
std::wstring fullName(const std::wstring& path) {
  return textFrom([&](wchar_t* buffer, DWORD size) {
    return GetFullPathNameW(path.c_str(), size, buffer, nullptr);
  });
}

}  // namespace

std::string utf8FromPath(const std::filesystem::path& path) {
  constexpr std::size_t mostBytes = 3;  // of one UTF-16 unit
  const std::wstring& units = path.native();
  std::string text(units.size() * mostBytes, '\0');
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, units.data(), static_cast<int>(units.size()), text.data(),
                          static_cast<int>(text.size()), nullptr, nullptr);
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::filesystem::path plainPath(const std::filesystem::path& path) {
  constexpr std::wstring_view prefix = LR"(\\?\)";
  constexpr std::wstring_view serverPrefix = LR"(\\?\UNC\)";
  const std::wstring& text = path.native();
  if (!text.starts_with(prefix)) {
    return path;
  }
  std::wstring plain;
  if (_wcsnicmp(text.c_str(), serverPrefix.data(), serverPrefix.size()) == 0) {
    plain = LR"(\\)" + text.substr(serverPrefix.size());
  } else {
    plain = text.substr(prefix.size());
  }
  // Without the prefix, Windows removes trailing dots, and does not know a volume's name.
  return fullName(plain) == plain ? plain : text;
}

std::filesystem::path absolutePath(const std::filesystem::path& path) {
  auto name = fullName(path.native());
  if (name.empty()) {
    throw qel::exception("\"" + utf8FromPath(path) +
                         "\" is no path: " + systemMessage(lastSystemError()));
  }
  return plainPath(name);
}

std::filesystem::path canonicalDirectory(const std::filesystem::path& directory,
                                         std::error_code& error) {
  const HANDLE opened = CreateFileW(directory.c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (opened == INVALID_HANDLE_VALUE) {
    error = lastSystemError();
    return {};
  }
  const std::unique_ptr<void, decltype(&CloseHandle)> closing(opened, &CloseHandle);
  error.clear();
  const auto name = textFrom([&](wchar_t* buffer, DWORD size) {
    return GetFinalPathNameByHandleW(opened, buffer, size, FILE_NAME_NORMALIZED);
  });
  return name.empty() ? absolutePath(directory) : plainPath(name);  // some drivers know no names
}

}  // namespace qel::utilities
