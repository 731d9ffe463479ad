#include "tools/support/Timeline.h"

#include <strings.h>

namespace qel::support {

bool TimelineFilter::admits(const records::Event& event) const {
  return (category.empty() || strcasecmp(event.category.c_str(), category.c_str()) == 0) &&
         event.time >= since && (until.empty() || event.time <= until) && search.finds(event);
}

std::vector<records::Event> TimelineFilter::select(std::vector<records::Event> events) const {
  std::erase_if(events, [this](const records::Event& event) { return !admits(event); });
  return events;
}

}  // namespace qel::support
