#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/OtherConnection.h"

namespace qel::test {

using namespace testing;

class WithdrawalTest : public DatabaseDirectory {
 protected:
  /// Rows of 400 bytes, which retention deletes from the first to the last.
  void storeOldRows(int number) const {
    SupportDatabaseClient({}).initialize(data_);
    query(supportFile_,
          "INSERT INTO Items(json, timestamp_utc) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
          "SELECT i + 1 FROM n WHERE i < " +
              std::to_string(number) + ") SELECT printf('%0400d', i), '2010-01-01' FROM n");
  }

  /// The number of rows, if they have been deleted in this order.
  double rowsLeft() const {
    return OtherConnection(supportFile_)
        .number("SELECT (SELECT max(ID) FROM Items) - (SELECT min(ID) FROM Items) + 1");
  }
};

/// Removes the recordings after the release of a client, or with its own call.
TEST_F(WithdrawalTest, RemovesEverythingWhileOldRowsAreBeingDeleted) {
  protocol::https::Settings settings;
  settings.connectTo = "127.0.0.1:1";  // where nobody listens
  settings.connectFor = "analytics.qel.example";
  protocol::https::setSettings(settings);
  for (const bool inOneCall : {false, true}) {
    storeOldRows(300'000);
    write(folder_ / "of the host", "");
    auto session = std::make_unique<Session>(data_, 1s);
    session->insert(1);
    session->databases.join();  // after the first of the old rows
    double left = 0;
    const auto countRowsLeft = [&](std::string_view name) {
      left = rowsLeft();
      return name == "of the host";
    };
    const auto begin = steady_clock::now();
    std::vector<RemovedFile> removed;
    if (inOneCall) {
      removed = session->client.withdraw(countRowsLeft);
    } else {
      utilities::setExitDeadline(0ms);
      session.reset();
      utilities::setExitDeadline(std::nullopt);
      removed = removeRecordings(folder_, countRowsLeft);
    }
    const auto time = steady_clock::now() - begin;
    EXPECT_GT(left, 1) << "nothing was left to be deleted";
    EXPECT_LT(time, 5s) << "two seconds, and a reserve for a busy machine";
    EXPECT_THAT(removed, AllOf(SizeIs(Gt(3)), Each(Field(&RemovedFile::error, std::error_code()))));
    EXPECT_TRUE(std::filesystem::is_empty(folder_));
    EXPECT_EQ(timesLogged("interrupted"), 0);
    measured() << (inOneCall ? "withdrawn" : "released and removed") << " after " << time / 1ms
               << " ms, with " << left << " rows\n";
  }
}

TEST_F(WithdrawalTest, DoesNotWaitForAHeldFileAndReportsWhatItCannotRemove) {
  Session session(data_);
  const OtherConnection other(supportFile_);
  ASSERT_TRUE(other.execute("BEGIN EXCLUSIVE"));
  session.insert(1);
  std::this_thread::sleep_for(1500ms);  // The worker takes the row and waits with it.
  std::vector<RemovedFile> removed;
  EXPECT_LT(timeOf([&] { removed = session.client.withdraw(); }), 1s);
  EXPECT_THAT(removed, SizeIs(Gt(2)));
  for (const auto& [file, size, error] : removed) {
    EXPECT_EQ(std::filesystem::exists(file), bool(error)) << "Windows keeps the held file";
  }
  EXPECT_EQ(timesLogged("failed"), 0);
}

/// A client that is released at once deletes for at most one second.
TEST_F(WithdrawalTest, IsNotNeededToDeleteOldRowsInSeveralStarts) {
  storeOldRows(100'000);
  int starts = 0;
  for (double left = 1; left > 0 && starts < 60; ++starts) {
    SupportDatabaseClient(1s).initialize(data_);
    removeRecordings(folder_, {}, [&](const auto& /*files*/) {
      left = rowsLeft();
      return false;
    });
  }
  EXPECT_EQ(rowsLeft(), 0);
  measured() << "100,000 old rows deleted in " << starts << " starts\n";
}

}  // namespace qel::test
