#include "tools/support/Html.h"

namespace qel::support::html {
namespace {

/// Neither HTML nor SVG may hold these.
bool isForbidden(char character) {
  return static_cast<unsigned char>(character) < 0x20 && character != '\n' && character != '\t';
}

}  // namespace

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

std::string tag(std::string_view name, const Attributes& attributes) {
  std::string result = "<";
  result += name;
  for (const auto& [key, value] : attributes) {
    result.append(" ").append(key).append("=\"").append(escaped(value)).append("\"");
  }
  return result + '>';
}

std::string element(std::string_view name, std::string_view text, const Attributes& attributes) {
  return tag(name, attributes).append(escaped(text)).append("</").append(name).append(">");
}

std::string element(std::string_view name, std::string_view text, std::string_view style) {
  return element(name, text,
                 style.empty() ? Attributes{} : Attributes{{"class", std::string(style)}});
}

}  // namespace qel::support::html
