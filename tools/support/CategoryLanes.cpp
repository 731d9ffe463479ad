#include "tools/support/CategoryLanes.h"

#include <cstdint>
#include <map>

#include "tools/records/Moment.h"
#include "tools/support/DisplayText.h"
#include "tools/support/DisplayTime.h"

namespace qel::support {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::object;
using records::Event;

constexpr double laneHeight = 22;
constexpr double top = 8;
constexpr std::size_t longestName = 18;

struct Lane {
  std::int64_t events = 0;
  std::map<std::int64_t, std::string> strokes;  ///< title of the first event, by position
};

std::map<std::string, Lane> lanesOf(const std::vector<Event>& events, const TimeAxis& axis) {
  std::map<std::string, Lane> lanes;
  for (const auto& event : events) {
    auto& lane = lanes[event.category];
    ++lane.events;
    if (const auto time = records::millisecondsOf(event.time)) {
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

data categoryLanes(const std::vector<Event>& events, const TimeAxis& axis) {
  data lanes(data::type::list);
  double y = top;
  for (const auto& [category, lane] : lanesOf(events, axis)) {
    data strokes(data::type::list);
    for (const auto& [x, title] : lane.strokes) {
      strokes << object{{"x", std::to_string(x)}, {"title", title}};
    }
    data drawn(
        object{{"label", nameOf(category) + ' ' + grouped(lane.events)}, {"y", oneDecimal(y)}});
    drawn["strokes"] = std::move(strokes);
    lanes << drawn;
    y += laneHeight;
  }
  constexpr double heightOfMarks = 26;
  data drawing(object{{"top", oneDecimal(top)},
                      {"bottom", oneDecimal(y)},
                      {"height", oneDecimal(y + heightOfMarks)}});
  drawing["marks"] = axis.marks();
  drawing["lanes"] = std::move(lanes);
  return drawing;
}

}  // namespace qel::support
