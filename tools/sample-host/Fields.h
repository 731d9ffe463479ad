#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "tools/common/CommandLine.h"

namespace qel::samplehost {

using tools::InputError;

/// The text in quotes and on one line, whatever it holds, for a message.
std::string quoted(const std::string& text);

/// Reads the fields of one JSON object by type. A field that is missing or of another type throws
/// `InputError`, which names the field with the names of the objects around it ("assert.line").
class Fields {
 public:
  /// Throws `InputError` when `value` is no object. It must outlive the fields.
  explicit Fields(const nlohmann::json& value) : Fields(value, "") {}

  bool has(const std::string& name) const { return object_.contains(name); }
  std::string text(const std::string& name);
  bool flag(const std::string& name);
  /// Any number from `lowest` to `highest`.
  double number(const std::string& name, double lowest, double highest);
  /// An object that holds nothing but texts.
  std::map<std::string, std::string> texts(const std::string& name);

  /// A whole number that `Integer` can hold.
  template <std::integral Integer>
  Integer integer(const std::string& name) {
    const auto& value = take(name);
    if (value.is_number_unsigned() && std::in_range<Integer>(value.get<std::uint64_t>())) {
      return static_cast<Integer>(value.get<std::uint64_t>());
    }
    if (value.is_number_integer() && !value.is_number_unsigned() &&
        std::in_range<Integer>(value.get<std::int64_t>())) {
      return static_cast<Integer>(value.get<std::int64_t>());
    }
    throw mistyped(name, "a whole number from " +
                             std::to_string(std::numeric_limits<Integer>::min()) + " to " +
                             std::to_string(std::numeric_limits<Integer>::max()));
  }

  /// What `read` makes of the object in this field; it has to read every field of it.
  template <typename Read>
  auto object(const std::string& name, Read read) {
    Fields inner(take(name), prefix_ + name);
    auto value = read(inner);
    inner.expectAllRead();
    return value;
  }

  /// Throws `InputError` naming a field that nobody has read, if there is one.
  void expectAllRead() const;

 private:
  Fields(const nlohmann::json& value, const std::string& path);

  const nlohmann::json& take(const std::string& name);
  InputError mistyped(const std::string& name, const std::string& expected) const;

  const nlohmann::json& object_;
  const std::string prefix_;  ///< what comes before a field's name in messages
  std::set<std::string> read_;
};

}  // namespace qel::samplehost
