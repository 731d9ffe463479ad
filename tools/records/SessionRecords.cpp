#include "tools/records/SessionRecords.h"

#include <utility>

namespace qel::records {

SessionRecords::SessionRecords(const std::string& id, const std::vector<RecordText>& texts) {
  session.id = id;
  std::vector<Event> environments;
  for (const auto& [table, text, count] : texts) {
    auto event = parseEvent(table, text);
    if (!event) {
      continue;
    }
    event->count = count;
    Row row;
    row.time = event->time;
    row.category = event->category;
    row.subcategory = event->subcategory;
    row.count = count;
    addTo(session, table, row);
    (table == Table::Events ? events : environments).push_back(std::move(*event));
  }
  events = merged(std::move(environments), std::move(events));
}

}  // namespace qel::records
