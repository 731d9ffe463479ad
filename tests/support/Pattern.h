#pragma once

#include <regex>

#include <gmock/gmock.h>

namespace qel::test {

/// Like `testing::MatchesRegex`, which knows no groups on Windows.
MATCHER_P(MatchesPattern, pattern, "") { return std::regex_match(arg, std::regex(pattern)); }

}  // namespace qel::test
