#include <algorithm>
#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/Effort.h"
#include "tests/faults/OtherConnection.h"
#include "tests/faults/Session.h"
#include "tests/support/MemoryDatabaseClient.h"
#include "tests/support/Query.h"

namespace qel::test {
namespace {

using namespace std::chrono_literals;
using log::analytics::SupportDatabaseClient;
using log::analytics::SupportDatabaseExporter;
using std::chrono::steady_clock;
using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::Lt;

/// Beyond the quarter of a second that a call may wait, this is the machine's part.
const auto longestCall = effort(450ms, 300ms);

steady_clock::duration timeOf(const std::function<void()>& call) {
  const auto begin = steady_clock::now();
  call();
  return steady_clock::now() - begin;
}

/// Both databases, which another process holds.
class HeldFileTest : public DatabaseDirectory {
 protected:
  void hold() const {
    for (const auto* other : {&sending_, &support_}) {
      EXPECT_TRUE(other->execute("BEGIN EXCLUSIVE"));
    }
  }
  void release() const {
    for (const auto* other : {&sending_, &support_}) {
      EXPECT_TRUE(other->execute("COMMIT"));
    }
  }
  std::vector<std::string> stored(const std::string& file) const {
    return query(data_ / file, "SELECT json FROM Items WHERE json NOT LIKE '{%' ORDER BY ID");
  }

  const OtherConnection sending_{data_ / "ItemDatabase.db"};
  const OtherConnection support_{data_ / "SupportDatabase.db"};
};

TEST_F(HeldFileTest, AClientStartsAtOnceAndStoresWhenTheFilesAreFree) {
  hold();
  std::unique_ptr<Session> session;
  EXPECT_LT(timeOf([&] { session = std::make_unique<Session>(data_, 1s); }), longestCall);
  session->insert(1);
  std::this_thread::sleep_for(effort(1500ms, 20'000ms));
  release();
  session->databases.join();
  EXPECT_FALSE(session->databases.errorOccurred());
  for (const auto* const file : {"ItemDatabase.db", "SupportDatabase.db"}) {
    EXPECT_THAT(stored(file), testing::ElementsAre("1")) << file;
    EXPECT_THAT(query(data_ / file, "PRAGMA auto_vacuum"), testing::ElementsAre("2")) << file;
  }
}

TEST_F(HeldFileTest, AnOverflowKeepsTheHostWaitingForAQuarterOfASecond) {
  Session session(data_);
  session.databases.join();
  hold();
  auto longest = steady_clock::duration::zero();
  for (int number = 0; !session.databases.errorOccurred(); ++number) {
    longest = std::max(longest, timeOf([&] { session.insert(number); }));
    if (number == 0) {
      std::this_thread::sleep_for(1500ms);  // The worker takes it, and waits with it.
    }
  }
  EXPECT_LT(longest, longestCall);
  EXPECT_THAT(logged(),
              AllOf(HasSubstr("qel.log.analytics.CipDatabases: the queue is full, so storage has "
                              "ended: {\"Category\": \"CIP\", \"Subcategory\": \"InsertingItems\""),
                    HasSubstr("SupportDatabase.db\": BEGIN failed")));
  release();
  session.databases.join();
  EXPECT_THAT(stored("SupportDatabase.db"), testing::ElementsAre("0"));
}

TEST_F(HeldFileTest, AnExportWaitsForFiveSeconds) {
  const auto held = std::make_shared<SupportDatabaseClient>(std::nullopt);
  held->initialize(data_);
  const auto free = std::make_shared<MemoryDatabaseClient>();
  const std::vector<std::string> rows(100, R"({"SessionId": "S"})");
  held->insertMultiple(rows, SupportDatabaseClient::Items);
  free->insertMultiple(rows, SupportDatabaseClient::Items);
  for (const bool isSourceHeld : {true, false}) {
    using Client = std::shared_ptr<log::analytics::CipDatabaseClientInterface>;
    SupportDatabaseExporter exporter(isSourceHeld ? Client(held) : Client(free));
    hold();
    EXPECT_THAT(timeOf([&] {
                  EXPECT_FALSE(exporter.exportLastSessionToSqliteFile(
                      "S", isSourceHeld ? Client(free) : Client(held)));
                }),
                AllOf(Ge(5s), Lt(5s + longestCall)));
    release();
    EXPECT_THAT(held->getAllItems(), testing::SizeIs(rows.size())) << "none was added";
    EXPECT_THAT(free->texts(SupportDatabaseClient::Items), testing::SizeIs(rows.size()));
  }
  const std::string givenUp =
      "([^\n]*waiting until it is free\n)?[^\n]*a statement was given up: database is "
      "locked[^\n]*\n";
  EXPECT_THAT(logged(),
              testing::MatchesRegex(givenUp + givenUp +
                                    "[^\n]*the export of session S is incomplete[^\n]*\n"));
}

/// In its short form the file is free again before the thirty seconds are over.
TEST_F(HeldFileTest, AReleaseEndsWithoutAnySetting) {
  auto session = std::make_unique<Session>(data_);
  session->databases.join();
  hold();
  session->insert(1);
  std::this_thread::sleep_for(1500ms);  // The worker takes it, and waits with it.
  auto holder = std::async(std::launch::async, [&] {
    std::this_thread::sleep_for(effort(1s, 40s));
    release();
  });
  const auto time = timeOf([&] { session.reset(); });
  holder.get();
  EXPECT_LT(time, 31s);
  EXPECT_THAT(stored("SupportDatabase.db"), testing::SizeIs(effort(1, 0)));
  measured() << "released after " << time / 1ms << " ms\n";
}

}  // namespace
}  // namespace qel::test
