#include "tools/report/MemoryPlot.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/records/Moment.h"
#include "tools/report/DisplayText.h"

namespace qel::report {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::object;
using records::Event;

constexpr double top = 12;  ///< pixels
constexpr double bottom = 190;
constexpr double kilobytesOfMegabyte = 1024;

struct Band {
  std::int64_t from, to;  ///< milliseconds
  double low, high;       ///< megabytes
};

struct Memory {
  std::vector<Band> bands;
  /// For each crash the readings before it, by their time in milliseconds.
  std::vector<std::map<std::int64_t, double>> lines;
  double highest = 0;
};

std::optional<std::int64_t> numberOf(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number >= 0 ? std::optional(number) : std::nullopt;
}

double megabytes(std::int64_t kilobytes) {
  return static_cast<double>(kilobytes) / kilobytesOfMegabyte;
}

std::map<std::int64_t, double> readingsOf(const Event& event) {
  std::map<std::int64_t, double> readings;
  for (const auto& [key, value] : event.details) {
    const auto second = numberOf(key);
    const auto amount = numberOf(value);
    constexpr std::int64_t endOfTime = 253'402'300'800;
    if (second && amount && *second < endOfTime) {
      readings.emplace(*second * 1000, megabytes(*amount));
    }
  }
  return readings;
}

Memory memoryOf(const std::vector<Event>& events, std::string_view scope) {
  Memory memory;
  std::optional<std::int64_t> reported;  // the start of the next report's interval
  for (const auto& event : events) {
    const auto time = records::millisecondsOf(event.time);
    if (!time) {
      continue;
    }
    reported = reported.value_or(*time);
    if (event.category != "MemoryUsage" || event.subcategory != scope) {
      continue;
    }
    const auto low = numberOf(event.detail("Min"));
    const auto high = numberOf(event.detail("Max"));
    if (event.event == "Crashed") {
      memory.lines.push_back(readingsOf(event));
    } else if (low && high) {
      memory.bands.push_back({*reported, *time, megabytes(*low), megabytes(*high)});
      reported = *time;
    }
    memory.highest = std::max(memory.highest, megabytes(high.value_or(0)));
  }
  return memory;
}

/// The smallest step, of at least 0.25, with which four steps reach `highest`. A step is 1, 2, 2.5
/// or 5 times a power of ten.
double gridStep(double highest) {
  const double least = std::max(highest / 4, 0.25);
  const double power = std::pow(10, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 2.5, 5.0}) {
    if (factor * power >= least) {
      return factor * power;
    }
  }
  return 10 * power;
}

/// The vertical axis of a plot.
class Scale {
 public:
  explicit Scale(double highest)
      : step_(gridStep(highest)), steps_(static_cast<int>(std::ceil(highest / step_))) {}

  double y(double amount) const { return bottom - amount / (step_ * steps_) * (bottom - top); }

  std::string text(double amount) const {
    return (step_ < 1 ? oneDecimal(amount) : grouped(std::llround(amount))) + " MB";
  }

  data grid() const {
    data lines(data::type::list);
    for (int step = 0; step <= steps_; ++step) {
      const double amount = step_ * step;
      lines << object{{"y", oneDecimal(y(amount))}, {"text", text(amount)}};
    }
    return lines;
  }

 private:
  const double step_;  ///< megabytes between two grid lines
  const int steps_;    ///< number of steps from bottom to top
};

data bandsOf(const Memory& memory, const TimeAxis& axis, const Scale& scale) {
  data bands(data::type::list);
  for (const auto& band : memory.bands) {
    bands << object{{"x", oneDecimal(axis.x(band.from))},
                    {"y", oneDecimal(scale.y(band.high))},
                    {"width", oneDecimal(axis.x(band.to) - axis.x(band.from))},
                    {"height", oneDecimal(scale.y(band.low) - scale.y(band.high))},
                    {"amounts", scale.text(band.low) + " to " + scale.text(band.high)}};
  }
  return bands;
}

data linesOf(const Memory& memory, const TimeAxis& axis, const Scale& scale) {
  data lines(data::type::list);
  for (const auto& line : memory.lines) {
    data readings(data::type::list);
    const bool isSingle = line.size() == 1;
    for (const auto& [time, amount] : line) {
      readings << object{{"x", oneDecimal(axis.x(time))},
                         {"y", oneDecimal(scale.y(amount))},
                         {"amount", scale.text(amount)},
                         {"isSingle", isSingle},
                         {"isRight", axis.x(time) > TimeAxis::right / 2}};
    }
    lines << data("readings", readings);
  }
  return lines;
}

data plotOf(const std::vector<Event>& events, std::string_view scope, const TimeAxis& axis) {
  const auto memory = memoryOf(events, scope);
  if (memory.bands.empty() && memory.lines.empty()) {
    return false;
  }
  const Scale scale(std::max(memory.highest, 1.0));
  data plot(object{{"top", oneDecimal(top)}, {"bottom", oneDecimal(bottom)}});
  plot["amounts"] = scale.grid();
  plot["bands"] = bandsOf(memory, axis, scale);
  plot["lines"] = linesOf(memory, axis, scale);
  return plot;
}

}  // namespace

data memoryPlots(const std::vector<Event>& events, const TimeAxis& axis) {
  data plots;
  for (const auto& [name, scope] : {std::pair("program", "Application"), {"machine", "Total"}}) {
    if (auto plot = plotOf(events, scope, axis); plot.is_object()) {
      plots[name] = std::move(plot);
    }
  }
  return plots.is_empty_object() ? data(false) : std::move(plots);
}

}  // namespace qel::report
