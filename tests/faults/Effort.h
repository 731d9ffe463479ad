#pragma once

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace qel::test {

/// Fault tests write so often that a disk slows them down, so their directories are in memory.
inline const int inMemory =
    std::filesystem::is_directory("/dev/shm") ? setenv("TMPDIR", "/dev/shm", 0) : 0;

/// How often, how long or how much: the long form is for QEL_FAULTS=long.
template <typename T>
T effort(T shortForm, T longForm) {
  const char* const form = std::getenv("QEL_FAULTS");
  return form != nullptr && std::string(form) == "long" ? longForm : shortForm;
}

/// Begins a line that `tests/faults/run` shows.
inline std::ostream& measured() { return std::cout << "measured: "; }

}  // namespace qel::test
