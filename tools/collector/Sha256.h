#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace qel::collector {

using Sha256 = std::array<std::uint8_t, 32>;

/// Throws `qel::exception` if the cryptographic library fails.
Sha256 sha256(std::string_view text);

}  // namespace qel::collector
