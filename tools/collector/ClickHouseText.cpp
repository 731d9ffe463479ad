#include "tools/collector/ClickHouseText.h"

#include <algorithm>
#include <array>

namespace qel::collector {
namespace {

constexpr std::size_t longestError = 240;

void appendHex(std::string& text, char byte) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  text += digits[value >> 4];
  text += digits[value & 15];
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

}  // namespace

std::string sqlLiteral(std::string_view text) {
  std::string literal = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') {
      literal += '\\';
      literal += c;
    } else if (isControl(c)) {
      literal += "\\x";
      appendHex(literal, c);
    } else {
      literal += c;
    }
  }
  return literal + '\'';
}

std::string encodedForUrl(std::string_view text) {
  std::string encoded;
  for (const char c : text) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.';
    if (isPlain) {
      encoded += c;
    } else {
      encoded += '%';
      appendHex(encoded, c);
    }
  }
  return encoded;
}

std::string shortenedError(std::string_view report) {
  // What follows these words describes the server's version, or quotes values of rows.
  constexpr std::array<std::string_view, 6> ends{", e.what()", " (version ", "Stack trace",
                                                 "before: ",   "(at row",    "\n"};
  for (const auto end : ends) {
    report = report.substr(0, report.find(end));
  }
  std::string text(report.substr(0, longestError));
  std::ranges::replace_if(text, isControl, ' ');
  return text.empty() ? "an answer without a text" : text;
}

}  // namespace qel::collector
