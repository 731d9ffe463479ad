#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::support {

/// Milliseconds since 1970-01-01 UTC of a record's time, "2026-11-21T09:30:05.123Z", or of a
/// shorter form of it down to the bare date. Nothing when `text` is neither.
std::optional<std::int64_t> millisecondsOf(std::string_view text);

/// Lets the span from `first` to `last`, both empty at the beginning, include a record's time; one
/// that is no time is passed over.
void widen(std::string& first, std::string& last, const std::string& time);

/// A record's time for people: "2026-11-21 09:30:05".
std::string readableTime(std::string_view text);

/// A length of time in its two largest units: "1 h 05 min", "3 min 20 s", "12.5 s".
std::string readableLength(std::int64_t milliseconds);

}  // namespace qel::support
