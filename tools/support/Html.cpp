#include "tools/support/Html.h"

namespace qel::support::html {
namespace {

/// Neither HTML nor SVG may hold these.
bool isForbidden(char character) {
  return static_cast<unsigned char>(character) < 0x20 && character != '\n' && character != '\t';
}

/// The text as it can stand in an element or a quoted attribute.
std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char character : text) {
    switch (character) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += isForbidden(character) ? "\uFFFD" : std::string(1, character);
    }
  }
  return result;
}

}  // namespace

std::string content(std::string_view text) {
  constexpr std::size_t longest = 2000;
  if (text.size() <= longest) {
    return escaped(text);
  }
  const auto isInsideCharacter = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
  };
  auto end = longest;
  while (end > 0 && isInsideCharacter(text[end])) {
    --end;
  }
  return escaped(text.substr(0, end)) + "…";
}

std::string tag(std::string_view name, const Attributes& attributes) {
  std::string result = "<";
  result += name;
  for (const auto& [key, value] : attributes) {
    result.append(" ").append(key).append("=\"").append(escaped(value)).append("\"");
  }
  return result + '>';
}

std::string element(std::string_view name, std::string_view text, const Attributes& attributes) {
  return tag(name, attributes).append(content(text)).append("</").append(name).append(">");
}

std::string element(std::string_view name, std::string_view text, std::string_view style) {
  return element(name, text,
                 style.empty() ? Attributes{} : Attributes{{"class", std::string(style)}});
}

}  // namespace qel::support::html
