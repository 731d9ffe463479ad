#pragma once

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace qel::fuzz {

/// Ends the run unless `holds`; the fuzzer then keeps the input that did it.
inline void check(bool holds, std::string_view promise) {
  if (!holds) {
    std::cerr << "Not kept: " << promise << '\n';
    std::abort();
  }
}

}  // namespace qel::fuzz
