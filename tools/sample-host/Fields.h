#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/QelId/Guid.h"
#include "tools/common/InputError.h"

namespace qel::samplehost {

using tools::InputError;

/// The text in quotes and on one line, whatever it holds, for a message.
std::string quoted(const std::string& text);

/// Reads the fields of one JSON object by type. A field that is missing or of another type throws
/// `InputError`, which names the field with what is around it ("assert.line",
/// "issues[0].message.id").
class Fields {
 public:
  /// Throws `InputError` when `value` is no object. It must outlive the fields.
  explicit Fields(const nlohmann::json& value) : Fields(value, "") {}

  bool has(const std::string& name) const { return object_.contains(name); }
  std::string text(const std::string& name);
  bool flag(const std::string& name);
  /// `count` values, true or false each.
  std::vector<bool> flags(const std::string& name, std::size_t count);
  double number(const std::string& name, double lowest = std::numeric_limits<double>::lowest(),
                double highest = std::numeric_limits<double>::max());
  Guid guid(const std::string& name);
  /// An object that holds nothing but texts.
  std::map<std::string, std::string> texts(const std::string& name);
  /// All fields, each a text named by a decimal number.
  std::map<std::uint32_t, std::string> numberedTexts();

  /// A whole number, by default any that `Integer` can hold.
  template <std::integral Integer>
  Integer integer(const std::string& name, Integer lowest = std::numeric_limits<Integer>::min(),
                  Integer highest = std::numeric_limits<Integer>::max()) {
    const auto& value = take(name);
    const auto isWithin = [&](auto number) {
      return std::cmp_less_equal(lowest, number) && std::cmp_less_equal(number, highest);
    };
    if (value.is_number_unsigned() && isWithin(value.get<std::uint64_t>())) {
      return static_cast<Integer>(value.get<std::uint64_t>());
    }
    if (value.is_number_integer() && !value.is_number_unsigned() &&
        isWithin(value.get<std::int64_t>())) {
      return static_cast<Integer>(value.get<std::int64_t>());
    }
    throw mistyped(
        name, "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
  }

  /// The enumerator of any 32-bit number, signed or unsigned, whether it has a name or not.
  template <typename Enumeration>
  Enumeration enumerator(const std::string& name) {
    return static_cast<Enumeration>(static_cast<std::uint32_t>(
        integer<std::int64_t>(name, std::numeric_limits<std::int32_t>::min(),
                              std::numeric_limits<std::uint32_t>::max())));
  }

  /// What `read` makes of the object in this field; it has to read every field of it.
  template <typename Read>
  auto object(const std::string& name, Read read) {
    return readWhole(take(name), prefix_ + name, read);
  }

  /// As `object`; for null what the type of `read`'s result is by default.
  template <typename Read>
  auto objectOrNull(const std::string& name, Read read) {
    const auto& value = take(name);
    return value.is_null() ? decltype(read(*this)){} : readWhole(value, prefix_ + name, read);
  }

  /// What `read` makes of each object in a list, as with `object`.
  template <typename Read>
  auto objects(const std::string& name, Read read) {
    std::vector<decltype(read(*this))> objects;
    for (const auto& element : takeList(name)) {
      objects.push_back(readWhole(element, prefix_ + elementName(name, objects.size()), read));
    }
    return objects;
  }

  /// Throws `InputError` naming a field that nobody has read, if there is one.
  void expectAllRead() const;

 private:
  Fields(const nlohmann::json& value, const std::string& path);

  template <typename Read>
  static auto readWhole(const nlohmann::json& value, const std::string& path, Read read) {
    Fields fields(value, path);
    auto result = read(fields);
    fields.expectAllRead();
    return result;
  }

  static std::string elementName(const std::string& list, std::size_t index) {
    return list + "[" + std::to_string(index) + "]";
  }

  const nlohmann::json& take(const std::string& name);
  const nlohmann::json& takeList(const std::string& name);
  InputError mistyped(const std::string& name, const std::string& expected) const;

  const nlohmann::json& object_;
  const std::string prefix_;  ///< what comes before a field's name in messages
  std::set<std::string> read_;
};

}  // namespace qel::samplehost
