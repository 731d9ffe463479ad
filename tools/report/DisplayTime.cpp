#include "tools/report/DisplayTime.h"

#include <chrono>
#include <ctime>
#include <optional>

#include "tools/common/InputError.h"
#include "tools/records/Moment.h"

namespace qel::report {
namespace {

constexpr std::size_t dayLength = 10;
constexpr std::int64_t minuteInMs = 60'000;

std::string twoDigits(std::int64_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

/// What must be added to a UTC time to get the local time of this machine.
std::int64_t localOffset(std::int64_t milliseconds) {
  using namespace std::chrono;
  const auto moment =
      static_cast<std::time_t>(floor<seconds>(std::chrono::milliseconds(milliseconds)).count());
  const std::tm* const local = std::localtime(&moment);
  if (local == nullptr) {
    return 0;
  }
  const sys_days date(year(local->tm_year + 1900) / (local->tm_mon + 1) / local->tm_mday);
  const auto shown = date.time_since_epoch() + hours(local->tm_hour) + minutes(local->tm_min) +
                     seconds(local->tm_sec);
  return (duration_cast<seconds>(shown).count() - moment) * 1000;
}

/// The offset in the form "+01:00".
std::string nameOf(std::int64_t offset) {
  const auto minutes = std::abs(offset) / minuteInMs;
  return (offset < 0 ? "-" : "+") + twoDigits(minutes / 60) + ':' + twoDigits(minutes % 60);
}

/// Removes the zone at the end of a shown time. Returns its offset; `std::nullopt` if there is
/// none.
std::optional<std::int64_t> takeOffset(std::string& time) {
  constexpr std::string_view utc = " UTC";
  constexpr std::string_view local = " +00:00";
  if (time.ends_with(utc)) {
    time.resize(time.size() - utc.size());
    return 0;
  }
  const auto place = time.rfind(' ');
  if (place == std::string::npos || place + local.size() != time.size() ||
      (time[place + 1] != '+' && time[place + 1] != '-')) {
    return std::nullopt;
  }
  const auto offset = records::millisecondsOf("1970-01-01T" + time.substr(place + 2));
  if (!offset) {
    return std::nullopt;
  }
  const bool isWest = time[place + 1] == '-';
  time.resize(place);
  return isWest ? -*offset : *offset;
}

/// The time in the zone, and the offset if it is a local one.
std::pair<std::string, std::string> inZone(std::string_view text, Zone zone) {
  const auto time = zone == Zone::Local ? records::millisecondsOf(text) : std::nullopt;
  if (!time) {
    return {std::string(text), ""};
  }
  const auto offset = localOffset(*time);
  return {records::textOfTime(*time + offset), ' ' + nameOf(offset)};
}

}  // namespace

std::string readableTime(std::string_view text) {
  std::string readable(text.substr(0, 19));
  if (readable.size() > dayLength && readable[dayLength] == 'T') {
    readable[dayLength] = ' ';
  }
  return readable;
}

std::string readableTime(std::string_view text, Zone zone) {
  const auto [time, offset] = inZone(text, zone);
  return readableTime(time) + offset;
}

std::string timeTitle(const std::string& name, Zone zone) {
  return name + (zone == Zone::Local ? " (local)" : " (UTC)");
}

ClockTime clockTime(std::string_view text, Zone zone) {
  const auto [time, offset] = inZone(text, zone);
  const bool isComplete = time.size() > dayLength + 1 && records::millisecondsOf(time);
  return {time.substr(0, dayLength) + offset, isComplete ? time.substr(dayLength + 1, 12) : time};
}

Period readPeriod(const std::string& option, const std::string& text, Zone zone) {
  std::string time = text;
  auto offset = takeOffset(time);
  if (time.size() > dayLength && time[dayLength] == ' ') {
    time[dayLength] = 'T';
  }
  const auto shown = records::millisecondsOf(time);
  if (!shown) {
    throw tools::InputError(option + ": " + text +
                            R"( is no time such as 2026-11-21 or "2026-11-21 09:30:05")");
  }
  if (time.ends_with('Z')) {
    time.pop_back();
    offset = 0;
  }
  constexpr std::int64_t dayInMs = 1440 * minuteInMs;
  const std::int64_t length = time.size() == 10   ? dayInMs
                              : time.size() == 16 ? minuteInMs
                              : time.size() == 19 ? 1000
                                                  : 1;
  // The offset may differ between the two times, because clocks are set forward and back.
  const auto utc = [&](std::int64_t local) {
    if (offset) {
      return local - *offset;
    }
    return zone == Zone::Local ? local - localOffset(local - localOffset(local)) : local;
  };
  return {records::textOfTime(utc(*shown)), records::textOfTime(utc(*shown + length) - 1)};
}

std::string readableLength(std::int64_t milliseconds) {
  if (milliseconds < 60'000) {
    return std::to_string(milliseconds / 1000) + '.' + std::to_string(milliseconds % 1000 / 100) +
           " s";
  }
  const auto minutes = milliseconds / 60'000;
  if (minutes < 60) {
    return std::to_string(minutes) + " min " + twoDigits(milliseconds / 1000 % 60) + " s";
  }
  constexpr std::int64_t minutesOfDay = 1440;
  if (minutes < minutesOfDay) {
    return std::to_string(minutes / 60) + " h " + twoDigits(minutes % 60) + " min";
  }
  return std::to_string(minutes / minutesOfDay) + " d " + twoDigits(minutes / 60 % 24) + " h";
}

}  // namespace qel::report
