#include <limits>

#include <gtest/gtest.h>

#include "Core/Utilities/Threads/Sleeper.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

TEST(DeadlineTest, AddsTheIntervalWithinTheClocksRange) {
  const steady_clock::time_point now{1000s};
  const auto end = steady_clock::time_point::max();
  const std::pair<std::chrono::duration<double>, steady_clock::time_point> cases[] = {
      {0.25s, now + 250ms},
      {-5s, now},
      {std::chrono::duration<double>(std::numeric_limits<double>::quiet_NaN()), now},
      {std::chrono::hours(24 * 365), now + std::chrono::hours(24 * 365)},
      {std::chrono::duration<double>(9.3e9), end},
      {std::chrono::duration<double>(std::numeric_limits<double>::max()), end},
  };
  for (const auto& [interval, expected] : cases) {
    EXPECT_EQ(qel::util::deadlineAfter(now, interval), expected) << interval.count();
  }
}

}  // namespace
