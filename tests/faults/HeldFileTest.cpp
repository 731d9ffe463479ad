#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/OtherConnection.h"

namespace qel::test {

using namespace testing;
using utilities::Patience;

/// A call waits for a quarter of a second; the rest is a reserve for a busy machine.
const auto longestCall = effort(450ms, 300ms);

/// Both databases, which another process can hold.
class HeldFileTest : public DatabaseDirectory {
 protected:
  void inBoth(const std::string& statement) const {
    EXPECT_TRUE(sending_.execute(statement) && support_.execute(statement));
  }

  const OtherConnection sending_{sendingFile_};
  const OtherConnection support_{supportFile_};
};

/// In the long form the release has no deadline except its own thirty seconds.
TEST_F(HeldFileTest, DelaysRowsButNeitherTheStartNorTheRelease) {
  inBoth("BEGIN EXCLUSIVE");
  std::unique_ptr<Session> session;
  EXPECT_LT(timeOf([&] { session = std::make_unique<Session>(data_, 1s); }), longestCall);
  std::size_t rows = 0;
  const auto insertFor = [&](std::chrono::seconds time) {
    for (const auto end = steady_clock::now() + time; steady_clock::now() < end; ++rows) {
      session->insert(0);
      std::this_thread::sleep_for(20ms);
    }
  };
  insertFor(effort(1s, 20s));
  EXPECT_TRUE(support_.execute("COMMIT"));
  insertFor(effort(1s, 60s));
  EXPECT_TRUE(sending_.execute("COMMIT"));
  session->databases.join();
  EXPECT_FALSE(session->databases.errorOccurred());
  for (const auto& file : {sendingFile_, supportFile_}) {
    EXPECT_THAT(textsIn(file), SizeIs(rows)) << file;
    EXPECT_THAT(query(file, "PRAGMA auto_vacuum"), ElementsAre("2")) << file;
  }
  inBoth("BEGIN EXCLUSIVE");
  session->insert(0);
  std::this_thread::sleep_for(1500ms);  // The worker takes the row and waits with it.
  utilities::setExitDeadline(effort(std::optional(300ms), {}));
  const auto time = timeOf([&] { session.reset(); });
  utilities::setExitDeadline(std::nullopt);
  EXPECT_LT(time, effort(1300ms, 31'000ms));
  EXPECT_GT(timesLogged("SupportDatabase.db\": BEGIN failed"), 0) << "the loss";
  measured() << rows << " rows stored after locks, released after " << time / 1ms << " ms\n";
}

TEST_F(HeldFileTest, DelaysOnlyTheCallThatOverflowsTheQueueForAQuarterOfASecond) {
  for (const auto callersPatience : {Patience::ofHost, Patience::unlimited}) {
    const Session session(data_);
    session.databases.join();
    EXPECT_TRUE(support_.execute("BEGIN EXCLUSIVE"));
    session.insert(0);
    std::this_thread::sleep_for(1500ms);  // The worker takes the row and waits with it.
    const auto queueing = timeOf([&] {
      for (int number = 1; number <= 10'000; ++number) {
        session.insert(number);
      }
    });
    EXPECT_LT(queueing, longestCall);
    EXPECT_FALSE(session.databases.errorOccurred());
    EXPECT_LT(timeOf([&] {
                const Patience patience(callersPatience);
                session.insert(-1);
              }),
              longestCall);
    EXPECT_TRUE(session.databases.errorOccurred());
    session.insert(-2);
    measured() << "10,000 items queued in " << queueing / 1us << " us\n";
    EXPECT_TRUE(support_.execute("COMMIT"));
    session.databases.join();
  }
  EXPECT_THAT(textsIn(supportFile_), ElementsAre("0", "0"));
  EXPECT_THAT(textsIn(sendingFile_), ElementsAre("0", "0"));
  EXPECT_THAT(query(sendingFile_, "SELECT count(*) FROM Items WHERE json LIKE '%CriticalLarge%'"),
              ElementsAre("2"));
  EXPECT_EQ(timesLogged("the queue is full"), 2) << "no other row is logged";
  EXPECT_EQ(timesLogged("the queue is full, so storage has ended: {\"Category\": \"CIP\""), 2);
  EXPECT_EQ(timesLogged("SupportDatabase.db\": BEGIN failed"), 2);
}

TEST_F(HeldFileTest, DelaysAnExportForFiveSeconds) {
  const auto held = std::make_shared<SupportDatabaseClient>(std::nullopt);
  held->initialize(data_);
  const auto free = std::make_shared<MemoryDatabaseClient>();
  const std::vector<std::string> rows(100, R"({"SessionId": "S"})");
  held->insertMultiple(rows, Items);
  free->insertMultiple(rows, Items);
  using Client = std::shared_ptr<CipDatabaseClientInterface>;
  for (const auto& [source, target] : {std::pair<Client, Client>(held, free), {free, held}}) {
    SupportDatabaseExporter exporter(source);
    bool isDone = true;
    inBoth("BEGIN EXCLUSIVE");
    EXPECT_THAT(
        timeOf([&, &to = target] { isDone = exporter.exportLastSessionToSqliteFile("S", to); }),
        AllOf(Ge(5s), Lt(8s)));
    inBoth("COMMIT");
    EXPECT_FALSE(isDone);
    EXPECT_THAT(held->getAllItems(), SizeIs(rows.size())) << "no row was added";
    EXPECT_THAT(free->texts(Items), SizeIs(rows.size()));
  }
  EXPECT_EQ(timesLogged("a statement was given up: database is locked"), 2) << "once an export";
  EXPECT_EQ(timesLogged("the export of session S is incomplete"), 1);
}

}  // namespace qel::test
