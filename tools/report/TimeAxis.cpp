#include "tools/report/TimeAxis.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "tools/report/DisplayText.h"

namespace qel::report {
namespace {

/// The possible distances between two marks, in seconds, which make the axis easy to read.
constexpr std::array<std::int64_t, 17> steps{1,   2,   5,    10,   15,   30,    60,    120,  300,
                                             600, 900, 1800, 3600, 7200, 14400, 43200, 86400};

std::int64_t stepFor(std::int64_t milliseconds) {
  constexpr std::int64_t mostLines = 8;
  const auto found = std::find_if(steps.begin(), steps.end(), [&](std::int64_t step) {
    return step * 1000 * mostLines >= milliseconds;
  });
  const auto days = milliseconds / 1000 / mostLines / steps.back() + 1;
  return (found == steps.end() ? steps.back() * days : *found) * 1000;
}

/// The label of a mark: the date at midnight, otherwise the time of day.
std::string markOf(std::int64_t milliseconds, bool withSeconds) {
  const std::chrono::sys_time<std::chrono::milliseconds> time{
      std::chrono::milliseconds(milliseconds)};
  const auto midnight = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(midnight);
  const std::chrono::hh_mm_ss clock(time - midnight);
  std::array<char, 48> text{};
  if (time == midnight) {
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  } else {
    std::snprintf(text.data(), text.size(), withSeconds ? "%02d:%02d:%02d" : "%02d:%02d",
                  static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
  }
  return text.data();
}

}  // namespace

TimeAxis::TimeAxis(std::int64_t firstMs, std::int64_t lastMs)
    : first_(firstMs), last_(std::max(lastMs, firstMs + 1)) {}

double TimeAxis::x(std::int64_t ms) const {
  const auto part = static_cast<double>(ms - first_) / static_cast<double>(last_ - first_);
  return std::clamp(part, 0.0, 1.0) * right;
}

kainjow::mustache::data TimeAxis::marks() const {
  using kainjow::mustache::data;
  const auto step = stepFor(last_ - first_);
  data marks(data::type::list);
  for (auto time = (first_ + step - 1) / step * step; time <= last_; time += step) {
    marks << kainjow::mustache::object{{"x", oneDecimal(x(time))},
                                       {"text", markOf(time, step < 60'000)}};
  }
  return marks;
}

}  // namespace qel::report
