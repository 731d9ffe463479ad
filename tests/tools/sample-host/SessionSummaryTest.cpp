#include <gmock/gmock.h>

#include "tools/sample-host/SessionSummary.h"

namespace qel::samplehost {
namespace {

TEST(SessionSummaryTest, TellsHowManyRowsWereNotStored) {
  SessionSummary summary;  // Of two earlier rows and these ten, nine were sent.
  summary.handedForSending = 10;
  summary.handedForSupport = 10;
  summary.sent = 9;
  summary.before.forSending = 2;
  summary.after.forSending = 3;
  summary.after.forSupport = 10;
  EXPECT_THAT(storageFailures(summary), testing::IsEmpty());
  summary.after.forSending = 2;
  summary.after.forSupport = 9;
  EXPECT_THAT(storageFailures(summary),
              testing::ElementsAre("ItemDatabase.db stored 9 of 10 rows.",
                                   "SupportDatabase.db stored 9 of 10 rows."));
}

}  // namespace
}  // namespace qel::samplehost
