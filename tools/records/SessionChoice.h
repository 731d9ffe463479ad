#pragma once

#include <string>
#include <string_view>

namespace qel::records {

/// A user's choice of a session: the last one, or the beginning of a session's ID. Upper and lower
/// case are equal, and braces and hyphens do not matter.
class SessionChoice {
 public:
  /// Throws `tools::InputError` if the text is neither "last" nor can begin an ID.
  explicit SessionChoice(const std::string& text);

  bool isLast() const { return isLast_; }
  const std::string& text() const { return text_; }

  /// Whether the ID is what the user wrote, or begins with it.
  bool isExactly(std::string_view id) const;
  bool begins(std::string_view id) const;

 private:
  const std::string text_;
  const bool isLast_;
  const std::string beginning_;
};

}  // namespace qel::records
