#include "tools/support/CategoryLanes.h"

#include <cstdint>
#include <map>

#include "tools/support/DisplayText.h"
#include "tools/support/Moment.h"
#include "tools/support/Svg.h"

namespace qel::support {
namespace {

constexpr double laneHeight = 22;
constexpr double top = 8;
constexpr std::size_t longestName = 18;

struct Lane {
  std::int64_t events = 0;
  std::map<std::int64_t, std::string> strokes;  ///< where they stand: the title of the first there
};

std::map<std::string, Lane> lanesOf(const std::vector<Event>& events, const TimeAxis& axis) {
  std::map<std::string, Lane> lanes;
  for (const auto& event : events) {
    auto& lane = lanes[event.category];
    ++lane.events;
    if (const auto time = millisecondsOf(event.time)) {
      lane.strokes.emplace(static_cast<std::int64_t>(axis.x(*time)),
                           readableTime(event.time) + ' ' + titleOf(event));
    }
  }
  return lanes;
}

std::string nameOf(const std::string& category) {
  if (category.empty()) {
    return "(none)";
  }
  return displayWidth(category) <= longestName ? category
                                               : wrapped(category, longestName).front() + "…";
}

}  // namespace

std::string categoryLanes(const std::vector<Event>& events, const TimeAxis& axis) {
  const auto lanes = lanesOf(events, axis);
  const double bottom = top + laneHeight * static_cast<double>(lanes.size());
  std::string drawing = svg::begin("Events by category", TimeAxis::width, bottom + 26);
  drawing += axis.grid(top, bottom);
  double y = top;
  for (const auto& [category, lane] : lanes) {
    drawing += svg::label("amount", TimeAxis::left - 8, y + 15,
                          nameOf(category) + ' ' + grouped(lane.events));
    for (const auto& [x, title] : lane.strokes) {
      drawing += svg::rectangle("stroke", {static_cast<double>(x), y + 3, 2, 16}, title);
    }
    y += laneHeight;
  }
  return drawing + "</svg>\n";
}

}  // namespace qel::support
