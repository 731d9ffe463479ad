#pragma once

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace qel::fuzz {

/// Aborts the run if `holds` is false. The fuzzer then keeps the input that caused the failure.
inline void check(bool holds, std::string_view promise) {
  if (!holds) {
    std::cerr << "Not kept: " << promise << '\n';
    std::abort();
  }
}

}  // namespace qel::fuzz
