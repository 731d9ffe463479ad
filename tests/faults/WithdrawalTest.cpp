#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/OtherConnection.h"

namespace qel::test {
namespace {

using namespace testing;

/// A directory with 300,000 old rows in the support database, 120 MB of text.
class WithdrawalTest : public DatabaseDirectory {
 protected:
  WithdrawalTest() {
    protocol::https::Settings settings;
    settings.connectTo = "127.0.0.1:1";  // where nobody listens
    settings.connectFor = "analytics.qel.example";
    protocol::https::setSettings(settings);
    SupportDatabaseClient({}).initialize(utilities::utf8FromPath(data_));
    query(supportFile_,
          "INSERT INTO Items(json, timestamp_utc) WITH RECURSIVE n(i) AS (SELECT 1 "
          "UNION ALL SELECT i + 1 FROM n WHERE i < 300000) "
          "SELECT printf('%0400d', i), '2010-01-01' FROM n");
  }

  /// The number of old rows, counted when no thread uses the directory any more.
  double oldRows() const {
    double rows = -1;
    removeRecordings(data_, {}, [&](const auto& /*files*/) {
      rows = OtherConnection(supportFile_)
                 .number("SELECT count(*) FROM Items WHERE timestamp_utc LIKE '2010%'");
      return false;
    });
    return rows;
  }
};

TEST_F(WithdrawalTest, RemovesEverythingWhileOldRowsAreBeingDeleted) {
  auto session = std::make_unique<Session>(utilities::utf8FromPath(data_), 1s);
  session->insert(1);
  session->databases.join();  // after the first of the old rows
  double left = 0;
  const auto begin = steady_clock::now();
  utilities::setExitDeadline(0ms);
  session.reset();
  utilities::setExitDeadline(std::nullopt);
  const auto released = steady_clock::now() - begin;
  const auto removed = removeRecordings(data_, {}, [&](const auto& /*files*/) {
    left = OtherConnection(supportFile_).number("SELECT count(*) FROM Items");
    return true;
  });
  const auto time = steady_clock::now() - begin;
  EXPECT_GT(left, 1) << "nothing was left to be deleted";
  EXPECT_LT(time, 5s) << "two seconds, and a reserve for a busy machine";
  EXPECT_THAT(removed, Each(Field(&RemovedFile::error, std::error_code())));
  EXPECT_TRUE(std::filesystem::is_empty(data_));
  measured() << "released after " << released / 1ms << " ms, removed after " << time / 1ms
             << " ms, with " << left << " old rows\n";
}

TEST_F(WithdrawalTest, IsNotNeededForTheEndOfADeletionThatOneStartCannotFinish) {
  int starts = 0;
  for (double before = oldRows(), after = 0; before > 0; before = after) {
    SupportDatabaseClient(1s).initialize(utilities::utf8FromPath(data_));
    after = oldRows();
    ++starts;
    ASSERT_LT(after, before) << "start " << starts;
  }
  measured() << "300,000 old rows deleted in " << starts << " starts of no length\n";
}

}  // namespace
}  // namespace qel::test
