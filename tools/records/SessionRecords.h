#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/records/Event.h"

namespace qel::records {

/// A record as the client wrote it.
struct RecordText {
  Table table = Table::Events;
  std::string text;
  std::int64_t count = 1;
};

/// A session whose records come from another place than a file.
struct SessionRecords {
  /// The texts must be in the order in which they were written. Leaves out those that are not
  /// records.
  SessionRecords(const std::string& id, const std::vector<RecordText>& texts);

  Session session;
  std::vector<Event> events;  ///< with the environment records, as `eventsOf` returns them
};

}  // namespace qel::records
