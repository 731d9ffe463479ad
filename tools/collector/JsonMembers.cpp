#include "tools/collector/JsonMembers.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace qel::collector {
namespace {

// These loops compare each character, because `find_first_of` calls a function for each.

/// The size of the string at the beginning of `text`, with its quotation marks.
std::size_t sizeOfString(std::string_view text) {
  std::size_t end = 1;
  while (text[end] != '"') {
    end += text[end] == '\\' ? 2 : 1;
  }
  return end + 1;
}

/// The size of the object or array at the beginning of `text`.
std::size_t sizeOfNested(std::string_view text) {
  std::size_t end = 1;
  for (int depth = 1; depth > 0;) {
    const char c = text[end];
    depth += c == '[' || c == '{' ? 1 : c == ']' || c == '}' ? -1 : 0;
    end += c == '"' ? sizeOfString(text.substr(end)) : 1;
  }
  return end;
}

std::size_t sizeOfValue(std::string_view text) {
  switch (text.front()) {
    case '"':
      return sizeOfString(text);
    case '[':
    case '{':
      return sizeOfNested(text);
    default:
      return text.find_first_of(",} \t\r\n");
  }
}

void skipTo(std::string_view& text, std::string_view separators) {
  text.remove_prefix(std::min(text.size(), text.find_first_not_of(separators)));
}

}  // namespace

bool JsonMembers::next() {
  skipTo(rest_, ", \t\r\n");
  if (rest_.starts_with('}')) {
    return false;
  }
  name_ = rest_.substr(0, sizeOfString(rest_));
  rest_.remove_prefix(name_.size());
  skipTo(rest_, ": \t\r\n");
  value_ = rest_.substr(0, sizeOfValue(rest_));
  rest_.remove_prefix(value_.size());
  return true;
}

std::optional<std::string_view> findMember(std::string_view object, std::string_view name,
                                           char start) {
  for (JsonMembers members(object); members.next();) {
    if (members.name() == name && members.value().front() == start) {
      return members.value();
    }
  }
  return std::nullopt;
}

std::string_view textOf(std::string_view value, std::string& storage) {
  if (value.front() != '"') {
    return value;
  }
  if (value.find('\\') == std::string_view::npos) {
    return value.substr(1, value.size() - 2);
  }
  storage = nlohmann::json::parse(value).get<std::string>();
  return storage;
}

}  // namespace qel::collector
