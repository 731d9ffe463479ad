#pragma once

#include <string_view>

namespace qel::util {

/// A class whose operations check their preconditions.
struct CheckedClass {
  std::string_view name;  ///< qualified
  std::string_view file;  ///< source path, without an ending
};

/// A check that failed in an operation of a class.
struct FailedCheck {
  std::string_view operation;  ///< name without its class
  int line;                    ///< marks the check and stays when the source changes
  std::string_view message;    ///< for developers
};

/// Adds the check to the host's assertions, if they are enabled. A caller that builds a text for it
/// asks `assert::Assert::isEnabled` first.
void report(const CheckedClass& checked, const FailedCheck& failure);

}  // namespace qel::util
