#include "host/QelDateTime/DateTimeFormat.h"

#include <chrono>
#include <cmath>
#include <cstdint>

namespace qel::datetime {
namespace {

using Milliseconds = std::chrono::sys_time<std::chrono::milliseconds>;

/// `time` rounded down to milliseconds, and limited to the years 0000 to 9999. NaN becomes the
/// first millisecond of the year 0000.
Milliseconds millisecondOf(const DateTime& time) {
  constexpr double first = -62'167'219'200'000;  // 0000-01-01T00:00:00.000Z
  constexpr double last = 253'402'300'799'999;   // 9999-12-31T23:59:59.999Z
  // Unlike std::clamp, fmax and fmin ignore a NaN argument.
  const double count =
      std::fmin(std::fmax(std::floor(time.secondsSinceEpoch() * 1000), first), last);
  return Milliseconds(std::chrono::milliseconds(static_cast<std::int64_t>(count)));
}

/// Overwrites `width` characters of `text` at `position` with `value` in decimal.
void writeDigits(std::string& text, std::size_t position, std::size_t width, unsigned value) {
  for (std::size_t i = position + width; i > position; value /= 10) {
    text[--i] = static_cast<char>('0' + value % 10);
  }
}

std::string utcWithMilliseconds(const DateTime& time) {
  const Milliseconds moment = millisecondOf(time);
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(moment - day);

  std::string text = "0000-00-00T00:00:00.000Z";
  writeDigits(text, 0, 4, static_cast<unsigned>(static_cast<int>(date.year())));
  writeDigits(text, 5, 2, static_cast<unsigned>(date.month()));
  writeDigits(text, 8, 2, static_cast<unsigned>(date.day()));
  writeDigits(text, 11, 2, static_cast<unsigned>(clock.hours().count()));
  writeDigits(text, 14, 2, static_cast<unsigned>(clock.minutes().count()));
  writeDigits(text, 17, 2, static_cast<unsigned>(clock.seconds().count()));
  writeDigits(text, 20, 3, static_cast<unsigned>(clock.subseconds().count()));
  return text;
}

}  // namespace

std::string DateTimeFormat::toString(const DateTime& time) const {
  switch (format_) {
    case SpecialFormat::UtcMilliseconds:
      return utcWithMilliseconds(time);
  }
  return {};
}

}  // namespace qel::datetime
