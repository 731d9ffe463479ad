#include <cmath>

#include <gtest/gtest.h>

#include "host/QelDateTime/DateTime.h"
#include "host/QelDateTime/DateTimeFormat.h"

namespace qel::datetime {

TEST(DateTimeFormatTest, WritesUtcWithMilliseconds) {
  const std::pair<double, const char*> texts[] = {
      {1795253405.1239, "2026-11-21T09:30:05.123Z"},  // truncated
      {-0.0005, "1969-12-31T23:59:59.999Z"},          // truncated downwards before the epoch too
      {-2203891200, "1900-03-01T00:00:00.000Z"},     {-62167219201, "0000-01-01T00:00:00.000Z"},
      {253402300800, "9999-12-31T23:59:59.999Z"},    {std::nan(""), "0000-01-01T00:00:00.000Z"},
  };
  const DateTimeFormat format(DateTimeFormat::SpecialFormat::UtcMilliseconds);
  for (const auto& [seconds, text] : texts) {
    EXPECT_EQ(format.toString(DateTime(seconds)), text) << seconds;
  }
}

}  // namespace qel::datetime
