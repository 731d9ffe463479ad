#include <chrono>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/QelDateTime/DateTime.h"
#include "host/QelDateTime/DateTimeFormat.h"

namespace qel::datetime {
namespace {

TEST(DateTimeTest, NowIsTheSystemClocksTime) {
  const auto secondsOfClock = [] {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
  };
  const double before = secondsOfClock();
  const double now = DateTime::now().secondsSinceEpoch();
  EXPECT_LE(before, now);
  EXPECT_LE(now, secondsOfClock());
}

TEST(DateTimeFormatTest, WritesUtcWithMilliseconds) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  struct Case {
    double seconds;
    const char* text;
  };
  const std::vector<Case> cases = {
      {0, "1970-01-01T00:00:00.000Z"},
      {1795253405.123, "2026-11-21T09:30:05.123Z"},
      {1795253405.1239, "2026-11-21T09:30:05.123Z"},  // cut
      {1735689599.9999, "2024-12-31T23:59:59.999Z"},  // a rounded one would lie in the next year
      {951782400, "2000-02-29T00:00:00.000Z"},
      {4107542400, "2100-03-01T00:00:00.000Z"},
      {-0.0005, "1969-12-31T23:59:59.999Z"},  // cut downwards before the epoch too
      {-2203891201, "1900-02-28T23:59:59.000Z"},
      {-2203891200, "1900-03-01T00:00:00.000Z"},
      {-62135596800, "0001-01-01T00:00:00.000Z"},
      {-62167219200, "0000-01-01T00:00:00.000Z"},
      {-62167219201, "0000-01-01T00:00:00.000Z"},
      {253402300799, "9999-12-31T23:59:59.000Z"},
      {253402300800, "9999-12-31T23:59:59.999Z"},
      {1e300, "9999-12-31T23:59:59.999Z"},
      {infinity, "9999-12-31T23:59:59.999Z"},
      {-infinity, "0000-01-01T00:00:00.000Z"},
      {std::numeric_limits<double>::quiet_NaN(), "0000-01-01T00:00:00.000Z"},
  };
  const DateTimeFormat format(DateTimeFormat::SpecialFormat::UtcMilliseconds);
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(format.toString(DateTime(seconds)), text) << seconds;
  }
}

}  // namespace
}  // namespace qel::datetime
