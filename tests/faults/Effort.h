#pragma once

#include <cstdlib>
#include <string_view>

namespace qel::test {

/// Whether the fault programme is to take its time, which `QEL_FAULTS=long` asks for.
inline bool longForm() {
  const char* const form = std::getenv("QEL_FAULTS");
  return form != nullptr && std::string_view(form) == "long";
}

template <typename T>
T effort(T shortForm, T longForm) {
  return test::longForm() ? longForm : shortForm;
}

}  // namespace qel::test
