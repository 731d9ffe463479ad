#pragma once

#include <string>
#include <string_view>

namespace qel::tools {

/// Converts a text of Windows to UTF-8. An unpaired surrogate becomes U+FFFD.
std::string utf8FromWide(std::wstring_view text);

}  // namespace qel::tools
