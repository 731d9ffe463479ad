#pragma once

#include <iosfwd>

#include "tools/support/Terminal.h"
#include "tools/support/Timeline.h"

namespace qel::support {

/// Prints a heading for the session and a line for each record.
void print(const Timeline& timeline, std::ostream& output, const Terminal& terminal);

/// Prints the stored records as one JSON array.
void printJson(const Timeline& timeline, std::ostream& output);

}  // namespace qel::support
