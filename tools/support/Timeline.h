#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/support/Event.h"
#include "tools/support/Terminal.h"

namespace qel::support {

/// Which of a session's records are wanted.
struct TimelineFilter {
  std::string category;  ///< in any case; empty: all
  std::string since;     ///< the beginning of a record's time; empty: from the start

  bool admits(const Event& event) const;
};

/// Throws `tools::InputError` unless `text` is a time, or the beginning of one, in UTC:
/// "2026-11-21", "2026-11-21 09:30", "2026-11-21T09:30:05.123Z". Returns it in a record's form.
std::string readSince(const std::string& text);

/// The session's head and a line for each record.
void printTimeline(const Session& session, const std::vector<Event>& events, std::ostream& output,
                   const Terminal& terminal);

/// The records as they are stored, one JSON array.
void printJson(const std::vector<Event>& events, std::ostream& output);

}  // namespace qel::support
