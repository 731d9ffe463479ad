#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qel::support {

/// A record's time in human-readable form: "2026-11-21 09:30:05".
std::string readableTime(std::string_view text);

/// A duration in its two largest units: "1 h 05 min", "3 min 20 s", "12.5 s".
std::string readableLength(std::int64_t milliseconds);

}  // namespace qel::support
