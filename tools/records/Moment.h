#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::records {

/// Parses a record's time, "2026-11-21T09:30:05.123Z", or a shorter form that has at least the
/// date. Returns milliseconds since 1970-01-01 UTC, or `std::nullopt` if `text` is not such a time.
std::optional<std::int64_t> millisecondsOf(std::string_view text);

/// A record's time from milliseconds since 1970-01-01 UTC.
std::string textOfTime(std::int64_t milliseconds);

/// Extends the interval from `first` to `last` so that it contains `time`. Both must be empty
/// before the first call. Ignores a `time` that is invalid.
void widen(std::string& first, std::string& last, std::string_view time);

}  // namespace qel::records
