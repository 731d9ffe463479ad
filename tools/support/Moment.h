#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::support {

/// Parses a record's time, "2026-11-21T09:30:05.123Z", or a shorter form of it down to the date.
/// Returns milliseconds since 1970-01-01 UTC, or nothing if `text` is no such time.
std::optional<std::int64_t> millisecondsOf(std::string_view text);

/// Extends the interval from `first` to `last`, both empty at the beginning, to a record's time.
/// Ignores a text that is no time.
void widen(std::string& first, std::string& last, const std::string& time);

/// A record's time for people to read: "2026-11-21 09:30:05".
std::string readableTime(std::string_view text);

/// A duration in its two largest units: "1 h 05 min", "3 min 20 s", "12.5 s".
std::string readableLength(std::int64_t milliseconds);

}  // namespace qel::support
