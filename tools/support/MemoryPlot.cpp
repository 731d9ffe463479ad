#include "tools/support/MemoryPlot.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>

#include "tools/support/DisplayText.h"
#include "tools/support/Html.h"
#include "tools/support/Moment.h"
#include "tools/support/Svg.h"

namespace qel::support {
namespace {

constexpr double top = 12;
constexpr double bottom = 190;
constexpr double height = 220;
constexpr double kilobytesOfMegabyte = 1024;

struct Band {
  std::int64_t from, to;  ///< milliseconds
  double low, high;       ///< megabytes
};

struct Memory {
  std::vector<Band> bands;
  std::vector<std::map<std::int64_t, double>> lines;  ///< of each crash, by milliseconds
  std::vector<std::int64_t> crashes;
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
  std::optional<std::int64_t> reported;  // when the span of the next report began
  for (const auto& event : events) {
    const auto time = millisecondsOf(event.time);
    if (!time) {
      continue;
    }
    reported = reported.value_or(*time);
    if (event.category == "Application" && event.subcategory == "Crashed") {
      memory.crashes.push_back(*time);
    }
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

/// The next of 1, 2, 5, 10, 20, … that four lines of the grid reach `highest` with.
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

/// Draws one scope's memory.
class Drawing {
 public:
  Drawing(const TimeAxis& axis, double highest)
      : axis_(axis), step_(gridStep(highest)), steps_(std::ceil(highest / step_)) {}

  std::string amounts() const {
    std::string marks;
    for (int step = 0; step <= static_cast<int>(steps_); ++step) {
      const double amount = step_ * step;
      marks += svg::line("grid", TimeAxis::left, TimeAxis::right, y(amount), y(amount));
      marks += svg::label("amount", TimeAxis::left - 8, y(amount) + 4, text(amount));
    }
    return marks;
  }

  std::string band(const Band& band) const {
    constexpr double leastSize = 1.5;
    const double left = std::min(axis_.x(band.from), TimeAxis::right - leastSize);
    const double width = std::max(axis_.x(band.to) - left, leastSize);
    const double size = std::max(y(band.low) - y(band.high), leastSize);
    return svg::rectangle("band", {left, y(band.high), width, size},
                          text(band.low) + " to " + text(band.high));
  }

  std::string readings(const std::map<std::int64_t, double>& readings) const {
    std::string points;
    std::string dots;
    for (const auto& [time, amount] : readings) {
      const auto x = svg::coordinate(axis_.x(time));
      const auto atAmount = svg::coordinate(y(amount));
      points.append(x).append(",").append(atAmount).append(" ");
      dots += html::tag("circle", {{"class", "dot"}, {"cx", x}, {"cy", atAmount}, {"r", "3"}}) +
              html::element("title", text(amount)) + "</circle>\n";
    }
    return html::element("polyline", "",
                         html::Attributes{{"class", "reading"}, {"points", points}}) +
           '\n' + dots;
  }

  /// Lines for all; of those that stand close together only the first is named.
  std::string crashes(const std::vector<std::int64_t>& times) const {
    constexpr double labelWidth = 50;
    std::string marks;
    double labelled = -labelWidth;
    for (const auto time : times) {
      const double x = axis_.x(time);
      marks += svg::line("crash", x, x, top, bottom);
      if (x - labelled >= labelWidth) {
        const bool atEnd = x > TimeAxis::right - labelWidth;
        marks +=
            svg::label(atEnd ? "crash before" : "crash", x + (atEnd ? -5 : 5), top + 10, "crash");
        labelled = x;
      }
    }
    return marks;
  }

 private:
  std::string text(double amount) const {
    return (step_ < 1 ? svg::coordinate(amount) : grouped(std::llround(amount))) + " MB";
  }
  double y(double amount) const { return bottom - amount / (step_ * steps_) * (bottom - top); }

  const TimeAxis& axis_;
  const double step_;   ///< megabytes between two lines of the grid
  const double steps_;  ///< how many there are up to the top
};

}  // namespace

std::string memoryPlot(const std::vector<Event>& events, std::string_view scope,
                       const TimeAxis& axis) {
  const auto memory = memoryOf(events, scope);
  if (memory.bands.empty() && memory.lines.empty()) {
    return {};
  }
  const auto title =
      scope == "Total" ? "Memory in use on the whole machine" : "Memory used by the program";
  const Drawing drawing(axis, std::max(memory.highest, 1.0));
  std::string plot = svg::begin(title, TimeAxis::width, height);
  plot += drawing.amounts() + axis.grid(top, bottom);
  for (const auto& band : memory.bands) {
    plot += drawing.band(band);
  }
  for (const auto& readings : memory.lines) {
    plot += drawing.readings(readings);
  }
  return plot + drawing.crashes(memory.crashes) + "</svg>\n";
}

}  // namespace qel::support
