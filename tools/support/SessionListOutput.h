#pragma once

#include <iosfwd>
#include <vector>

#include "tools/records/Session.h"
#include "tools/support/Terminal.h"

namespace qel::support {

void print(const std::vector<records::Session>& sessions, std::ostream& output,
           const Terminal& terminal);
void printJson(const std::vector<records::Session>& sessions, std::ostream& output);

}  // namespace qel::support
