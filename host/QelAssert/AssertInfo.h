#pragma once

#include <string>

namespace qel::assert {

/// What kind of check failed.
enum class AssertType { Assertion = 0, Precondition = 1, Postcondition = 2, Invariant = 3 };

/// The record of one failed assertion.
struct AssertInfo {
  std::string message;   ///< the fault, for developers
  std::string function;  ///< qualified name of the function that found it
  std::string file;      ///< source path, without an ending
  int line = 0;          ///< identifies the check; may differ from its line in the source
  AssertType type = AssertType::Assertion;  ///< unnamed numbers are reported as "Unknown"
};

}  // namespace qel::assert
