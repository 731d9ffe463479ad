#pragma once

#include <string>

namespace qel::assert {

/// The kind of check that failed.
enum class AssertType { Assertion = 0, Precondition = 1, Postcondition = 2, Invariant = 3 };

/// The record of one failed assertion.
struct AssertInfo {
  std::string message;   ///< describes the fault, for developers
  std::string function;  ///< qualified name of the function that contains the check
  std::string file;      ///< source path, without a file name extension
  int line = 0;          ///< identifies the check; may differ from its line in the source
  AssertType type = AssertType::Assertion;  ///< other values are reported as "Unknown"
};

}  // namespace qel::assert
