#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qel::collector {

/// Steps through the members of a JSON object without building a tree. The object's text must be
/// valid JSON, and exist as long as the views of it are used.
class JsonMembers {
 public:
  explicit JsonMembers(std::string_view object) : rest_(object.substr(1)) {}

  /// Goes to the next member. Returns false after the last one.
  bool next();

  /// The name as it is written, with its quotation marks.
  std::string_view name() const { return name_; }
  /// The value as it is written.
  std::string_view value() const { return value_; }

 private:
  std::string_view rest_;
  std::string_view name_;
  std::string_view value_;
};

/// The first member of this name whose value begins with `start`; null if there is none. `name` has
/// its quotation marks.
std::optional<std::string_view> findMember(std::string_view object, std::string_view name,
                                           char start);

/// The text of a string, or another value as it is written. `storage` keeps a text that has
/// escapes.
std::string_view textOf(std::string_view value, std::string& storage);

}  // namespace qel::collector
