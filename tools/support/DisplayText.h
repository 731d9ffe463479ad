#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qel::support {

/// A text from a database made fit for a terminal: control characters, and those that turn the
/// direction of writing, are told by their numbers, so that no stored text can command it.
std::string printable(std::string_view text);

/// How many columns of a terminal the text takes.
std::size_t displayWidth(std::string_view text);

/// The text in lines of at most `width` columns, broken at blanks where there are any.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// A number with its thousands apart: "30,720,000".
std::string grouped(std::int64_t number);

/// A number with one decimal, whatever the locale.
std::string oneDecimal(double number);

/// An amount of bytes for people: "29.3 MB".
std::string readableSize(std::uintmax_t bytes);

}  // namespace qel::support
