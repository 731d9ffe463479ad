#pragma once

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace qel::test {

/// Whether the long form of the fault programme runs: QEL_FAULTS=long.
inline bool longForm() {
  const char* form = std::getenv("QEL_FAULTS");
  return form != nullptr && std::string_view(form) == "long";
}

/// How often, how long or how much, by the form that runs.
template <typename T>
T effort(T shortForm, T longForm) {
  return test::longForm() ? longForm : shortForm;
}

/// Begins a line that `tests/faults/run` shows.
inline std::ostream& measured() { return std::cout << "measured: "; }

}  // namespace qel::test
