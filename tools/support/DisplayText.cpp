#include "tools/support/DisplayText.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace qel::support {
namespace {

struct Character {
  char32_t code;
  std::size_t length;  ///< in bytes
};

constexpr char32_t replacement = 0xFFFD;

/// The character that the text begins with; a byte that begins none counts as the replacement.
Character firstOf(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) {
    return {lead, 1};
  }
  const std::size_t length = lead < 0xC0 || lead > 0xF7 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length == 0 || length > text.size()) {
    return {replacement, 1};
  }
  char32_t code = lead & (0xFFU >> (length + 1));
  for (const char byte : text.substr(1, length - 1)) {
    const auto bits = static_cast<unsigned char>(byte);
    if ((bits & 0xC0U) != 0x80) {
      return {replacement, 1};
    }
    code = code << 6 | (bits & 0x3FU);
  }
  return {code, length};
}

bool commandsTerminal(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x200E && code <= 0x200F) ||
         (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

std::size_t columnsOf(char32_t code) {
  if ((code >= 0x300 && code < 0x370) || code == 0x200B || code == 0x200D ||
      (code >= 0xFE00 && code <= 0xFE0F)) {
    return 0;
  }
  constexpr std::array<std::pair<char32_t, char32_t>, 8> wide{{{0x1100, 0x115F},
                                                               {0x2E80, 0xA4CF},
                                                               {0xAC00, 0xD7A3},
                                                               {0xF900, 0xFAFF},
                                                               {0xFE30, 0xFE6F},
                                                               {0xFF00, 0xFF60},
                                                               {0x1F300, 0x1FAFF},
                                                               {0x20000, 0x3FFFD}}};
  return std::any_of(wide.begin(), wide.end(),
                     [&](const auto& range) { return code >= range.first && code <= range.second; })
             ? 2
             : 1;
}

std::string escaped(char32_t code) {
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

/// How many bytes fit into `width` columns, at least one character.
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

}  // namespace qel::support
