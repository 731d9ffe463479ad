#include "host/QelUtilities/StandardError.h"

#include <algorithm>

#include <windows.h>

namespace qel::utilities {

StandardError::StandardError() noexcept {
  DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_ERROR_HANDLE), GetCurrentProcess(),
                  &handle_, 0, FALSE, DUPLICATE_SAME_ACCESS);
}

StandardError::~StandardError() {
  if (handle_ != nullptr) {
    CloseHandle(handle_);
  }
}

void StandardError::write(std::string_view text) const {
  constexpr std::size_t mostAtOnce = 65'536;
  DWORD count = 1;
  while (handle_ != nullptr && !text.empty() && count > 0) {
    const auto size = static_cast<DWORD>(std::min(text.size(), mostAtOnce));
    if (WriteFile(handle_, text.data(), size, &count, nullptr) == 0) {
      return;
    }
    text.remove_prefix(count);
  }
}

void StandardError::writeLine(std::string line) const { write(line += '\n'); }

}  // namespace qel::utilities
