#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qel::report {

/// The zone in which times are shown and read.
enum class Zone { Utc, Local };

/// A record's time in human-readable form: "2026-11-21 09:30:05".
std::string readableTime(std::string_view text);

/// The time as the zone's clocks show it, "2026-11-21 09:30:05". A local time is followed by the
/// zone's offset at that time: "2026-11-21 10:30:05 +01:00".
std::string readableTime(std::string_view text, Zone zone);

/// The title of a column of times: "First (UTC)" or "First (local)".
std::string timeTitle(const std::string& name, Zone zone);

/// The parts of a time of day. An invalid time is all clock.
struct ClockTime {
  std::string day;    ///< with the offset of a local time
  std::string clock;  ///< with milliseconds
};
ClockTime clockTime(std::string_view text, Zone zone);

/// The first and the last record's time of a period in the zone, such as "2026-11-21" (a day),
/// "2026-11-21 09:30" (a minute) or "2026-11-21 09:30:05". The text may end with its own zone, as a
/// time that is shown: " UTC" or " +01:00".
struct Period {
  std::string first;
  std::string last;
};
/// Throws `tools::InputError`, which names the option, if `text` is not such a period.
Period readPeriod(const std::string& option, const std::string& text, Zone zone);

/// A duration in its two largest units: "1 h 05 min", "3 min 20 s", "12.5 s".
std::string readableLength(std::int64_t milliseconds);

}  // namespace qel::report
