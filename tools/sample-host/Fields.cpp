#include "tools/sample-host/Fields.h"

#include <sstream>

namespace qel::samplehost {

std::string quoted(const std::string& text) { return nlohmann::json(text).dump(); }

Fields::Fields(const nlohmann::json& value, const std::string& path)
    : object_(value), prefix_(path.empty() ? "" : path + ".") {
  if (!value.is_object()) {
    throw InputError(path.empty() ? "not a JSON object"
                                  : "field " + quoted(path) + " must be an object");
  }
}

std::string Fields::text(const std::string& name) {
  const auto& value = take(name);
  if (!value.is_string()) {
    throw mistyped(name, "a text");
  }
  return value.get<std::string>();
}

bool Fields::flag(const std::string& name) {
  const auto& value = take(name);
  if (!value.is_boolean()) {
    throw mistyped(name, "true or false");
  }
  return value.get<bool>();
}

double Fields::number(const std::string& name, double lowest, double highest) {
  const auto& value = take(name);
  if (!value.is_number() || value.get<double>() < lowest || value.get<double>() > highest) {
    std::ostringstream expected;
    expected << "a number from " << lowest << " to " << highest;
    throw mistyped(name, expected.str());
  }
  return value.get<double>();
}

std::map<std::string, std::string> Fields::texts(const std::string& name) {
  const auto& value = take(name);
  Fields inner(value, prefix_ + name);
  std::map<std::string, std::string> texts;
  for (const auto& member : value.items()) {
    texts.emplace(member.key(), inner.text(member.key()));
  }
  return texts;
}

void Fields::expectAllRead() const {
  for (const auto& member : object_.items()) {
    if (!read_.contains(member.key())) {
      throw InputError("unknown field " + quoted(prefix_ + member.key()));
    }
  }
}

const nlohmann::json& Fields::take(const std::string& name) {
  const auto member = object_.find(name);
  if (member == object_.end()) {
    throw InputError("field " + quoted(prefix_ + name) + " is missing");
  }
  read_.insert(name);
  return *member;
}

InputError Fields::mistyped(const std::string& name, const std::string& expected) const {
  return InputError{"field " + quoted(prefix_ + name) + " must be " + expected};
}

}  // namespace qel::samplehost
