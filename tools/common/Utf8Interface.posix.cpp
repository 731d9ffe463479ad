#include "tools/common/Utf8Interface.h"

#include <algorithm>

namespace qel::tools {

std::vector<std::string> utf8Arguments(int count, const char* const* values) {
  return {values + 1, values + std::max(count, 1)};
}

Utf8Streams::Utf8Streams() = default;

Utf8Streams::~Utf8Streams() = default;

}  // namespace qel::tools
