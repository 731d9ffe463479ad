#pragma once

#include <iosfwd>
#include <vector>

#include "tools/support/SessionList.h"
#include "tools/support/Terminal.h"

namespace qel::support {

void print(const std::vector<Session>& sessions, std::ostream& output, const Terminal& terminal);
void printJson(const std::vector<Session>& sessions, std::ostream& output);

}  // namespace qel::support
