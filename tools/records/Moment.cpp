#include "tools/records/Moment.h"

#include <array>
#include <cctype>
#include <chrono>
#include <cstdio>

namespace qel::records {
namespace {

/// '0' matches any digit. Every other character matches itself.
constexpr std::string_view pattern = "0000-00-00T00:00:00.000Z";

std::int64_t digits(std::string_view text, std::size_t position, std::size_t count) {
  std::int64_t number = 0;
  for (std::size_t i = position; i < position + count && i < text.size(); ++i) {
    number = number * 10 + (text[i] - '0');
  }
  return number;
}

bool hasForm(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool digit = std::isdigit(static_cast<unsigned char>(text[i])) != 0;
    if (pattern[i] == '0' ? !digit : text[i] != pattern[i]) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<std::int64_t> millisecondsOf(std::string_view text) {
  if (text.ends_with('Z') && text.size() < pattern.size()) {
    text.remove_suffix(1);
  }
  const auto length = text.size();
  const bool complete = length == 10 || length == 16 || length == 19 || length >= 23;
  if (!complete || length > pattern.size() || !hasForm(text)) {
    return std::nullopt;
  }
  using namespace std::chrono;
  const year_month_day date(year(static_cast<int>(digits(text, 0, 4))),
                            month(static_cast<unsigned>(digits(text, 5, 2))),
                            day(static_cast<unsigned>(digits(text, 8, 2))));
  if (!date.ok() || digits(text, 11, 2) > 23 || digits(text, 14, 2) > 59 ||
      digits(text, 17, 2) > 59) {
    return std::nullopt;
  }
  const auto seconds = (digits(text, 11, 2) * 60 + digits(text, 14, 2)) * 60 + digits(text, 17, 2);
  return duration_cast<milliseconds>(sys_days(date).time_since_epoch()).count() + seconds * 1000 +
         digits(text, 20, 3);
}

std::string textOfTime(std::int64_t time) {
  using namespace std::chrono;
  const auto day = floor<days>(milliseconds(time));
  const year_month_day date{sys_days(day)};
  const hh_mm_ss clock(milliseconds(time) - day);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()),
                static_cast<int>(clock.subseconds().count()));
  return text.data();
}

void widen(std::string& first, std::string& last, std::string_view time) {
  if (millisecondsOf(time)) {
    if (first.empty() || time < first) {
      first = time;
    }
    if (time > last) {
      last = time;
    }
  }
}

}  // namespace qel::records
