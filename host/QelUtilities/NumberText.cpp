#include "host/QelUtilities/NumberText.h"

#include <array>
#include <charconv>
#include <limits>

namespace qel::utilities {

std::string textWithSixDecimals(double number) {
  constexpr int decimals = 6;
  constexpr std::size_t signAndPoint = 2;
  std::array<char, std::numeric_limits<double>::max_exponent10 + 1 + decimals + signAndPoint>
      text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), number,
                                    std::chars_format::fixed, decimals);
  return {text.data(), result.ptr};
}

}  // namespace qel::utilities
