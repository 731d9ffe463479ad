#pragma once

#include <string>
#include <vector>

#include "tools/records/Event.h"

namespace qel::support {

/// Selects records of a session.
struct TimelineFilter {
  std::string category;  ///< case-insensitive; empty: all categories
  std::string since;     ///< a record's time, possibly shortened; empty: no limit
};

/// Converts a UTC time, which may be shortened down to the date, to the form of a record's time.
/// Examples: "2026-11-21", "2026-11-21 09:30", "2026-11-21T09:30:05.123Z". Throws
/// `tools::InputError` for any other text.
std::string readSince(const std::string& text);

/// A session and the records that a filter has selected.
struct Timeline {
  records::Session session;
  std::vector<records::Event> events;
};

Timeline timelineOf(const records::Session& session, const TimelineFilter& filter);

}  // namespace qel::support
