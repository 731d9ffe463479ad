#pragma once

#include <filesystem>
#include <iostream>

#include "tests/support/Environment.h"

namespace qel::test {

/// Fault tests write so often that a disk slows them down, so their directories are in memory.
inline const bool isInMemory = [] {
  const bool isPossible =
      std::getenv("TMPDIR") == nullptr && std::filesystem::is_directory("/dev/shm");
  if (isPossible) {
    setTemporaryRoot("/dev/shm");
  }
  return isPossible;
}();

/// How often, how long or how much: the long form is for QEL_FAULTS=long.
template <typename T>
T effort(T shortForm, T longForm) {
  const char* const form = std::getenv("QEL_FAULTS");
  return form != nullptr && std::string(form) == "long" ? longForm : shortForm;
}

/// Begins a line that `tests/faults/run` shows.
inline std::ostream& measured() { return std::cout << "measured: "; }

}  // namespace qel::test
