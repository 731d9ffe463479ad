#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/QelId/Guid.h"
#include "host/QelNotification/Notification.h"

namespace qel::notification {

/// The text in quotes and on one line, for use in a message.
std::string quoted(const std::string& text);

/// Parses one JSON text. Throws `NotificationError` if it is not JSON.
nlohmann::json parseJson(std::string_view text);

/// Reads the plain values among the fields of one JSON object. Throws `NotificationError` if a
/// field is missing or has another type. The message names the field and its path, such as
/// "assert.line".
class PlainFields {
 public:
  /// `value` must outlive this object. `path` precedes the field names in messages. Throws
  /// `NotificationError` if `value` is not an object.
  explicit PlainFields(const nlohmann::json& value, const std::string& path = "");

  bool has(const std::string& name) const { return object_.contains(name); }
  std::string text(const std::string& name);
  bool flag(const std::string& name);
  /// A list of `count` values, each true or false.
  std::vector<bool> flags(const std::string& name, std::size_t count);
  double number(const std::string& name, double lowest = std::numeric_limits<double>::lowest(),
                double highest = std::numeric_limits<double>::max());
  Guid guid(const std::string& name);
  /// A list of strings.
  std::vector<std::string> textList(const std::string& name);
  /// An object whose members are all strings.
  std::map<std::string, std::string> texts(const std::string& name);
  /// All fields of this object, which must be strings whose names are decimal numbers.
  std::map<std::uint32_t, std::string> numberedTexts();

  /// A whole number that `Integer` can hold.
  template <std::integral Integer>
  Integer integer(const std::string& name) {
    return static_cast<Integer>(wholeNumber(name, std::numeric_limits<Integer>::min(),
                                            std::numeric_limits<Integer>::max()));
  }

  /// The field as an enumeration value. Any signed or unsigned 32-bit number is allowed, named or
  /// not.
  template <typename Enumeration>
  Enumeration enumerator(const std::string& name) {
    return static_cast<Enumeration>(
        static_cast<std::uint32_t>(wholeNumber(name, std::numeric_limits<std::int32_t>::min(),
                                               std::numeric_limits<std::uint32_t>::max())));
  }

  /// Throws `NotificationError` if a field has not been read. The message names the field.
  void expectAllRead() const;

 protected:
  const nlohmann::json& take(const std::string& name);
  const nlohmann::json& takeList(const std::string& name);
  std::string pathOf(const std::string& name) const { return prefix_ + name; }
  static std::string elementName(const std::string& list, std::size_t index);

 private:
  /// A negative number is returned modulo 2^64.
  std::uint64_t wholeNumber(const std::string& name, std::int64_t lowest, std::uint64_t highest);
  NotificationError mistyped(const std::string& name, const std::string& expected) const;

  const nlohmann::json& object_;
  const std::string prefix_;  ///< precedes the field names in messages
  std::set<std::string> read_;
};

}  // namespace qel::notification
