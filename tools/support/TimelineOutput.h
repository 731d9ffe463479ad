#pragma once

#include <iosfwd>

#include "tools/support/Terminal.h"
#include "tools/support/Timeline.h"

namespace qel::support {

/// The session's head and a line for each record.
void print(const Timeline& timeline, std::ostream& output, const Terminal& terminal);

/// The records as they are stored, one JSON array.
void printJson(const Timeline& timeline, std::ostream& output);

}  // namespace qel::support
