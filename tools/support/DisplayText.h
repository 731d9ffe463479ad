#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qel::support {

/// Makes a stored text safe to print on a terminal: control characters, and those that change the
/// direction of writing, become escapes such as "\u001b".
std::string printable(std::string_view text);

/// The number of terminal columns that the text takes.
std::size_t displayWidth(std::string_view text);

/// Breaks the text into lines of at most `width` columns, at blanks if possible.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// A number with separators of thousands: "30,720,000".
std::string grouped(std::int64_t number);

/// A number with one decimal, independent of the locale.
std::string oneDecimal(double number);

/// An amount of bytes for people to read: "29.3 MB".
std::string readableSize(std::uintmax_t bytes);

}  // namespace qel::support
