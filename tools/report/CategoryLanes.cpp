#include "tools/report/CategoryLanes.h"

#include <cstdint>
#include <map>
#include <string>

#include "tools/records/Moment.h"
#include "tools/report/DisplayText.h"
#include "tools/report/DisplayTime.h"
#include "tools/report/Ending.h"

namespace qel::report {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::object;
using records::Event;

struct Lane {
  std::int64_t events = 0;
  std::map<std::string, std::string> strokes;  ///< title of the first event, by position
};

std::map<std::string, Lane> lanesOf(const std::vector<Event>& events, const TimeAxis& axis) {
  std::map<std::string, Lane> lanes;
  for (const auto& event : events) {
    auto& lane = lanes[event.category];
    lane.events += event.count;
    if (const auto time = records::millisecondsOf(event.time)) {
      lane.strokes.emplace(oneDecimal(axis.x(*time)),
                           readableTime(event.time) + ' ' + titleOf(event));
    }
  }
  return lanes;
}

}  // namespace

data categoryLanes(const std::vector<Event>& events, const TimeAxis& axis) {
  data lanes(data::type::list);
  for (const auto& [category, lane] : lanesOf(events, axis)) {
    data strokes(data::type::list);
    for (const auto& [x, title] : lane.strokes) {
      strokes << object{{"x", x}, {"title", title}};
    }
    data drawn(
        object{{"name", category.empty() ? "(none)" : category}, {"count", grouped(lane.events)}});
    drawn["strokes"] = std::move(strokes);
    lanes << drawn;
  }
  return lanes;
}

data crashMarks(const std::vector<Event>& events, const TimeAxis& axis) {
  constexpr double labelWidth = 15;  // percent; enough for a narrow page
  double labelled = -labelWidth;
  data crashes(data::type::list);
  for (const auto& event : events) {
    const auto time = records::millisecondsOf(event.time);
    if (!time || !isCrash(event)) {
      continue;
    }
    const double x = axis.x(*time);
    data label = false;
    if (x - labelled >= labelWidth) {
      const bool atEnd = x > TimeAxis::right - labelWidth;
      label = object{{"style", atEnd ? "crash before" : "crash"}, {"gap", atEnd ? "-5" : "5"}};
      labelled = x;
    }
    crashes << object{{"x", oneDecimal(x)}, {"label", label}};
  }
  return crashes;
}

}  // namespace qel::report
