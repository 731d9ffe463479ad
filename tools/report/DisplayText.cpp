#include "tools/report/DisplayText.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <utf8proc.h>

namespace qel::report {
namespace {

struct Character {
  utf8proc_int32_t code;
  std::size_t length;  ///< in bytes
};

constexpr utf8proc_int32_t replacement = 0xFFFD;

/// The first character of `text`, which must not be empty. An invalid byte counts as the
/// replacement character.
Character firstOf(std::string_view text) {
  utf8proc_int32_t code = 0;
  const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                       static_cast<utf8proc_ssize_t>(text.size()), &code);
  return length < 1 ? Character{replacement, 1} : Character{code, static_cast<std::size_t>(length)};
}

bool commandsTerminal(utf8proc_int32_t code) {
  return utf8proc_category(code) == UTF8PROC_CATEGORY_CC || (code >= 0x200E && code <= 0x200F) ||
         (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

std::size_t columnsOf(utf8proc_int32_t code) {
  return static_cast<std::size_t>(utf8proc_charwidth(code));
}

std::string escaped(utf8proc_int32_t code) {
  switch (code) {
    case U'\n':
      return "\\n";
    case U'\t':
      return "\\t";
    case U'\r':
      return "\\r";
    default:
      break;
  }
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(code));
  return text.data();
}

/// The length in bytes of the first characters of `text` that fit into `width` columns. At least
/// one character is counted.
std::size_t bytesThatFit(std::string_view text, std::size_t width) {
  std::size_t bytes = 0;
  std::size_t columns = 0;
  while (bytes < text.size()) {
    const auto next = firstOf(text.substr(bytes));
    columns += columnsOf(next.code);
    if (columns > width && bytes > 0) {
      break;
    }
    bytes += next.length;
  }
  return bytes;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const auto next = firstOf(text);
    if (next.code == replacement) {
      result += "\uFFFD";
    } else if (commandsTerminal(next.code)) {
      result += escaped(next.code);
    } else {
      result += text.substr(0, next.length);
    }
    text.remove_prefix(next.length);
  }
  return result;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const auto next = firstOf(text);
    columns += columnsOf(next.code);
    text.remove_prefix(next.length);
  }
  return columns;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  for (;;) {
    const auto fitting = bytesThatFit(text, width);
    if (fitting == text.size()) {
      lines.emplace_back(text);
      return lines;
    }
    const auto blank = text.substr(0, fitting + 1).rfind(' ');
    const bool breakable = blank != std::string_view::npos && blank > 0;
    lines.emplace_back(text.substr(0, breakable ? blank : fitting));
    text.remove_prefix(breakable ? blank + 1 : fitting);
  }
}

std::string grouped(std::int64_t number) {
  std::string text = std::to_string(number);
  for (auto place = static_cast<std::ptrdiff_t>(text.size()) - 3; place > 0; place -= 3) {
    text.insert(static_cast<std::size_t>(place), 1, ',');
  }
  return text;
}

std::string oneDecimal(double number) {
  const auto tenths = std::llround(number * 10);
  return (tenths < 0 ? "-" : "") + std::to_string(std::llabs(tenths) / 10) + '.' +
         std::to_string(std::llabs(tenths) % 10);
}

std::string readableSize(std::uintmax_t bytes) {
  if (bytes < 1000) {
    return std::to_string(bytes) + " bytes";
  }
  constexpr std::array<const char*, 4> units{"kB", "MB", "GB", "TB"};
  auto amount = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  for (; amount >= 999.95 && unit + 1 < units.size(); ++unit) {
    amount /= 1000;
  }
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", amount, units[unit]);
  return text.data();
}

}  // namespace qel::report
