#pragma once

#include <string>

namespace qel::utilities {

/// The number in fixed notation with six decimals, as the C library's "%f" writes it, but with a
/// point in every locale.
std::string textWithSixDecimals(double number);

}  // namespace qel::utilities
