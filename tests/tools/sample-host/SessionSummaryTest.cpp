#include <gmock/gmock.h>

#include "tools/sample-host/SessionSummary.h"

namespace qel::samplehost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Ten rows handed to each database; of two earlier ones and these, nine were sent.
SessionSummary orderlySession() {
  SessionSummary summary;
  summary.handedForSending = 10;
  summary.handedForSupport = 10;
  summary.sent = 9;
  summary.before.forSending = 2;
  summary.after.forSending = 3;
  summary.after.forSupport = 10;
  return summary;
}

TEST(SessionSummaryTest, TellsWhatWasNotStored) {
  EXPECT_THAT(storageFailures(orderlySession()), IsEmpty());

  auto withoutARow = orderlySession();
  withoutARow.after.forSending = 2;
  withoutARow.after.forSupport = 9;
  EXPECT_THAT(storageFailures(withoutARow), ElementsAre("ItemDatabase.db stored 9 of 10 rows.",
                                                        "SupportDatabase.db stored 9 of 10 rows."));

  // The marker row makes up for a dropped one in number.
  auto full = orderlySession();
  full.before.fullMarkers = 1;
  full.after.fullMarkers = 2;
  EXPECT_THAT(storageFailures(full), ElementsAre(HasSubstr("rows were dropped")));
}

}  // namespace
}  // namespace qel::samplehost
