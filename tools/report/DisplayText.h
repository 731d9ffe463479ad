#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qel::report {

/// Makes a stored text safe to print on a terminal: control characters, and characters that change
/// the writing direction, become escapes such as "\u001b".
std::string printable(std::string_view text);

/// The number of terminal columns that the text takes.
std::size_t displayWidth(std::string_view text);

/// Breaks the text into lines of at most `width` columns, at spaces if possible.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// A number with thousands separators: "30,720,000".
std::string grouped(std::int64_t number);

/// A number with one decimal, independent of the locale.
std::string oneDecimal(double number);

/// A number of bytes in human-readable form: "29.3 MB".
std::string readableSize(std::uintmax_t bytes);

}  // namespace qel::report
