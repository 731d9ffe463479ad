#pragma once

#include <string_view>

namespace qel::util {

/// A class whose operations check their preconditions.
struct CheckedClass {
  std::string_view name;  ///< qualified name
  std::string_view file;  ///< path of the source file, without the extension
};

/// A check that failed in an operation of a class.
struct FailedCheck {
  std::string_view operation;  ///< name without the class
  int line;                    ///< identifies the check; fixed even if the source changes
  std::string_view message;    ///< for developers
};

/// Reports the check to the host as an assertion failure, if assertions are enabled. A caller that
/// builds a message for the check should call `assert::Assert::isEnabled` first.
void report(const CheckedClass& checked, const FailedCheck& failure);

}  // namespace qel::util
