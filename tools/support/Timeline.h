#pragma once

#include <string>
#include <vector>

#include "tools/support/Event.h"

namespace qel::support {

/// Which of a session's records are wanted.
struct TimelineFilter {
  std::string category;  ///< in any case; empty: all
  std::string since;     ///< the beginning of a record's time; empty: from the start
};

/// Throws `tools::InputError` unless `text` is a time, or the beginning of one, in UTC:
/// "2026-11-21", "2026-11-21 09:30", "2026-11-21T09:30:05.123Z". Returns it in a record's form.
std::string readSince(const std::string& text);

/// A session, and those of its records that are wanted.
struct Timeline {
  Session session;
  std::vector<Event> events;
};

Timeline timelineOf(const Session& session, const TimelineFilter& filter);

}  // namespace qel::support
