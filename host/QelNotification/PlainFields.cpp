#include "host/QelNotification/PlainFields.h"

#include <charconv>
#include <sstream>
#include <utility>

#include "host/QelUtilities/Exception.h"

namespace qel::notification {

std::string quoted(const std::string& text) { return nlohmann::json(text).dump(); }

nlohmann::json parseJson(std::string_view text) {
  auto json = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  // The parser treats NUL as the end of the text.
  if (json.is_discarded() || text.find('\0') != std::string_view::npos) {
    throw NotificationError("not JSON");
  }
  return json;
}

PlainFields::PlainFields(const nlohmann::json& value, const std::string& path)
    : object_(value), prefix_(path.empty() ? "" : path + ".") {
  if (!value.is_object()) {
    throw NotificationError(path.empty() ? "not a JSON object"
                                         : "field " + quoted(path) + " must be an object");
  }
}

std::string PlainFields::text(const std::string& name) {
  const auto& value = take(name);
  if (!value.is_string()) {
    throw mistyped(name, "a text");
  }
  return value.get<std::string>();
}

bool PlainFields::flag(const std::string& name) {
  const auto& value = take(name);
  if (!value.is_boolean()) {
    throw mistyped(name, "true or false");
  }
  return value.get<bool>();
}

std::vector<bool> PlainFields::flags(const std::string& name, std::size_t count) {
  const auto& list = takeList(name);
  if (list.size() != count) {
    throw mistyped(name, "a list of " + std::to_string(count));
  }
  std::vector<bool> flags;
  for (const auto& element : list) {
    if (!element.is_boolean()) {
      throw mistyped(elementName(name, flags.size()), "true or false");
    }
    flags.push_back(element.get<bool>());
  }
  return flags;
}

double PlainFields::number(const std::string& name, double lowest, double highest) {
  const auto& value = take(name);
  if (!value.is_number() || value.get<double>() < lowest || value.get<double>() > highest) {
    std::ostringstream expected;
    expected << "a number from " << lowest << " to " << highest;
    throw mistyped(name, expected.str());
  }
  return value.get<double>();
}

Guid PlainFields::guid(const std::string& name) {
  const auto digits = text(name);
  try {
    return Guid::parse(digits);
  } catch (const qel::exception&) {
    throw mistyped(name, "a GUID");
  }
}

std::vector<std::string> PlainFields::textList(const std::string& name) {
  std::vector<std::string> texts;
  for (const auto& element : takeList(name)) {
    if (!element.is_string()) {
      throw mistyped(elementName(name, texts.size()), "a text");
    }
    texts.push_back(element.get<std::string>());
  }
  return texts;
}

std::map<std::string, std::string> PlainFields::texts(const std::string& name) {
  const auto& value = take(name);
  PlainFields inner(value, pathOf(name));
  std::map<std::string, std::string> texts;
  for (const auto& member : value.items()) {
    texts.emplace(member.key(), inner.text(member.key()));
  }
  return texts;
}

std::map<std::uint32_t, std::string> PlainFields::numberedTexts() {
  std::map<std::uint32_t, std::string> texts;
  for (const auto& member : object_.items()) {
    const auto& name = member.key();
    std::uint32_t number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number);
    if (std::to_string(number) != name) {
      throw mistyped(name, "named by a decimal number");
    }
    texts.emplace(number, text(name));
  }
  return texts;
}

void PlainFields::expectAllRead() const {
  for (const auto& member : object_.items()) {
    if (!read_.contains(member.key())) {
      throw NotificationError("unknown field " + quoted(pathOf(member.key())));
    }
  }
}

const nlohmann::json& PlainFields::take(const std::string& name) {
  const auto member = object_.find(name);
  if (member == object_.end()) {
    throw NotificationError("field " + quoted(pathOf(name)) + " is missing");
  }
  read_.insert(name);
  return *member;
}

const nlohmann::json& PlainFields::takeList(const std::string& name) {
  const auto& value = take(name);
  if (!value.is_array()) {
    throw mistyped(name, "a list");
  }
  return value;
}

std::string PlainFields::elementName(const std::string& list, std::size_t index) {
  return list + "[" + std::to_string(index) + "]";
}

std::uint64_t PlainFields::wholeNumber(const std::string& name, std::int64_t lowest,
                                       std::uint64_t highest) {
  const auto& value = take(name);
  const auto isWithin = [&](auto number) {
    return std::cmp_less_equal(lowest, number) && std::cmp_less_equal(number, highest);
  };
  const bool isValid = value.is_number_unsigned()
                           ? isWithin(value.get<std::uint64_t>())
                           : value.is_number_integer() && isWithin(value.get<std::int64_t>());
  if (!isValid) {
    throw mistyped(
        name, "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
  }
  return value.get<std::uint64_t>();
}

NotificationError PlainFields::mistyped(const std::string& name,
                                        const std::string& expected) const {
  return NotificationError{"field " + quoted(pathOf(name)) + " must be " + expected};
}

}  // namespace qel::notification
