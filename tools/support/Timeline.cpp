#include "tools/support/Timeline.h"

#include <algorithm>
#include <cctype>

#include "tools/common/CommandLine.h"
#include "tools/support/Moment.h"

namespace qel::support {
namespace {

bool equalInAnyCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  });
}

bool admits(const TimelineFilter& filter, const Event& event) {
  return (filter.category.empty() || equalInAnyCase(event.category, filter.category)) &&
         event.time >= filter.since;
}

}  // namespace

std::string readSince(const std::string& text) {
  std::string time = text;
  if (time.size() > 10 && time[10] == ' ') {
    time[10] = 'T';
  }
  if (!time.empty() && !millisecondsOf(time)) {
    throw tools::InputError("--since: " + text +
                            R"( is no time in UTC such as 2026-11-21 or "2026-11-21 09:30:05")");
  }
  if (time.ends_with('Z') && time.size() < 24) {
    time.pop_back();
  }
  return time;
}

Timeline timelineOf(const Session& session, const TimelineFilter& filter) {
  Timeline timeline{session, eventsOf(session)};
  std::erase_if(timeline.events, [&](const Event& event) { return !admits(filter, event); });
  return timeline;
}

}  // namespace qel::support
