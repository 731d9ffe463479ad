#include "host/QelUtilities/StandardError.h"

#include <algorithm>

#include <windows.h>

namespace qel::utilities {
namespace {

/// A duplicate of the handle, which is never closed; null if there is no standard error.
HANDLE standardError() {
  static const HANDLE handle = [] {
    HANDLE duplicate = nullptr;
    DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_ERROR_HANDLE), GetCurrentProcess(),
                    &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return duplicate;
  }();
  return handle;
}

/// Duplicates the handle when this library is loaded.
[[maybe_unused]] const HANDLE duplicated = standardError();

}  // namespace

void writeToStandardError(std::string_view text) {
  constexpr std::size_t mostAtOnce = 65'536;
  const HANDLE handle = standardError();
  DWORD count = 1;
  while (handle != nullptr && !text.empty() && count > 0) {
    const auto size = static_cast<DWORD>(std::min(text.size(), mostAtOnce));
    if (WriteFile(handle, text.data(), size, &count, nullptr) == 0) {
      return;
    }
    text.remove_prefix(count);
  }
}

void writeLineToStandardError(std::string line) { writeToStandardError(line += '\n'); }

}  // namespace qel::utilities
