#pragma once

#include <string>

namespace qel::utilities {

/// The number in fixed notation with six decimals, like "%f" of the C library, but with a decimal
/// point in every locale.
std::string textWithSixDecimals(double number);

}  // namespace qel::utilities
