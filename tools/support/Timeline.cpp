#include "tools/support/Timeline.h"

#include <vector>

#include <strings.h>

#include "tools/common/InputError.h"
#include "tools/records/Moment.h"

namespace qel::support {
namespace {

using records::Event;

bool admits(const TimelineFilter& filter, const Event& event) {
  return (filter.category.empty() ||
          strcasecmp(event.category.c_str(), filter.category.c_str()) == 0) &&
         event.time >= filter.since;
}

}  // namespace

std::string readSince(const std::string& text) {
  std::string time = text;
  if (time.size() > 10 && time[10] == ' ') {
    time[10] = 'T';
  }
  if (!time.empty() && !records::millisecondsOf(time)) {
    throw tools::InputError("--since: " + text +
                            R"( is no time in UTC such as 2026-11-21 or "2026-11-21 09:30:05")");
  }
  if (time.ends_with('Z') && time.size() < 24) {
    time.pop_back();
  }
  return time;
}

Timeline timelineOf(const records::Session& session, const TimelineFilter& filter) {
  Timeline timeline{session, eventsOf(session)};
  std::erase_if(timeline.events, [&](const Event& event) { return !admits(filter, event); });
  return timeline;
}

}  // namespace qel::support
