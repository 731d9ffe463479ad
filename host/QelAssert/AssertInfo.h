#pragma once

#include <string>

namespace qel::assert {

/// What kind of check failed.
enum class AssertType { Assertion = 0, Precondition = 1, Postcondition = 2, Invariant = 3 };

/// The record of one failed assertion.
struct AssertInfo {
  std::string message;   ///< what went wrong, for developers
  std::string function;  ///< qualified name of the function that found it
  std::string file;      ///< source path, without an ending
  int line = 0;          ///< marks the check; need not be its line in today's source
  AssertType type = AssertType::Assertion;  ///< a number without a name is reported as "Unknown"
};

}  // namespace qel::assert
