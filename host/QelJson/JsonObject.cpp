#include "host/QelJson/JsonObject.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

namespace qel::json {
namespace {

constexpr auto plainCharacters = [] {
  std::array<bool, 256> plain{};
  std::fill(plain.begin() + ' ', plain.begin() + '~' + 1, true);
  plain['"'] = plain['\\'] = false;
  return plain;
}();

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char character) {
    return plainCharacters[static_cast<unsigned char>(character)];
  });
}

/// Most strings are plain and need only quotes. The JSON library escapes all other strings.
void appendText(std::string& out, std::string_view text) {
  if (!isPlain(text)) {
    constexpr int oneLine = -1;
    constexpr bool ensureAscii = false;
    out += nlohmann::json(text).dump(oneLine, ' ', ensureAscii,
                                     nlohmann::json::error_handler_t::replace);
    return;
  }
  out += '"';
  out += text;
  out += '"';
}

std::string jsonText(std::string_view text) {
  std::string out;
  appendText(out, text);
  return out;
}

template <typename Elements, typename AppendElement>
void appendArray(std::string& out, const Elements& elements, AppendElement appendElement) {
  out += '[';
  std::string_view separator;
  for (const auto& element : elements) {
    out += std::exchange(separator, ", ");
    appendElement(element);
  }
  out += ']';
}

}  // namespace

JsonObject::JsonObject() {
  constexpr std::size_t sizeOfMost = 512;
  text_.reserve(sizeOfMost);
  text_ += '{';
}

JsonObject& JsonObject::addString(std::string_view key, std::string_view value) {
  if (isPlain(key) && isPlain(value)) {
    appendPlainMember(key, value);
    return *this;
  }
  appendKey(key);
  appendText(text_, value);
  return *this;
}

JsonObject& JsonObject::addBool(std::string_view key, bool value) {
  appendKey(key);
  text_ += value ? "true" : "false";
  return *this;
}

JsonObject& JsonObject::addDouble(std::string_view key, double value) {
  appendKey(key);
  text_ += nlohmann::json(value).dump();
  return *this;
}

JsonObject& JsonObject::addStringMap(std::string_view key,
                                     const std::map<std::string, std::string>& values) {
  appendKey(key);
  text_ += '{';
  std::set<std::string> unusualNames;
  for (const auto& [name, value] : values) {
    if (isPlain(name) || unusualNames.insert(jsonText(name)).second) {
      addString(name, value);
    }
  }
  text_ += '}';
  return *this;
}

JsonObject& JsonObject::addStringVector(std::string_view key,
                                        const std::vector<std::string>& values) {
  appendKey(key);
  appendArray(text_, values, [this](const std::string& value) { appendText(text_, value); });
  return *this;
}

JsonObject& JsonObject::addJsonObject(std::string_view key, const JsonObject& value) {
  appendKey(key);
  text_ += value.text_;
  text_ += '}';
  return *this;
}

JsonObject& JsonObject::addJsonObjectVector(std::string_view key,
                                            const std::vector<JsonObject>& values) {
  appendKey(key);
  appendArray(text_, values, [this](const JsonObject& value) {
    text_ += value.text_;
    text_ += '}';
  });
  return *this;
}

std::string JsonObject::toString() const& { return text_ + '}'; }

std::string JsonObject::toString() && {
  text_ += '}';
  return std::move(text_);
}

/// Resizes the text only once for the whole member, because most members are short.
void JsonObject::appendPlainMember(std::string_view key, std::string_view value) {
  constexpr std::string_view between = "\": \"";
  const std::string_view before = text_.back() == '{' ? "\"" : ", \"";
  const auto begin = text_.size();
  text_.resize(begin + before.size() + key.size() + between.size() + value.size() + 1);
  char* out = text_.data() + begin;
  out += before.copy(out, before.size());
  out += key.copy(out, key.size());
  out += between.copy(out, between.size());
  out += value.copy(out, value.size());
  *out = '"';
}

void JsonObject::appendKey(std::string_view key) {
  const bool isFirstMember = text_.back() == '{';  // a member never ends with an opening brace
  if (!isFirstMember) {
    text_ += ", ";
  }
  appendText(text_, key);
  text_ += ": ";
}

}  // namespace qel::json
