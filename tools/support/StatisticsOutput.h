#pragma once

#include <iosfwd>

#include "tools/support/Statistics.h"
#include "tools/support/Terminal.h"

namespace qel::support {

void print(const Statistics& statistics, std::ostream& output, const Terminal& terminal);
void printJson(const Statistics& statistics, std::ostream& output);

}  // namespace qel::support
