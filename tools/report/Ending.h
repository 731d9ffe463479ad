#pragma once

#include <cstddef>
#include <vector>

#include <kainjow/mustache.hpp>

#include "tools/records/Event.h"

namespace qel::report {

/// How a session ended.
struct Ending {
  records::Session::End kind;
  /// The position of the last crash or stop; the number of events if neither was recorded.
  std::size_t place;
};

bool isCrash(const records::Event& event);

/// The last crash; without a crash, the last stop.
Ending endingOf(const std::vector<records::Event>& events);

/// Template data of the report's verdict: "heading", "when" (false if no record has a time),
/// "afterwards" (false unless the program started again after the crash), whether the program
/// "crashed" or its end is "unknown", and the "facts" that support asks for first, each with "name"
/// and "value".
kainjow::mustache::data verdictOf(const records::Session& session,
                                  const std::vector<records::Event>& events, const Ending& ending);

}  // namespace qel::report
