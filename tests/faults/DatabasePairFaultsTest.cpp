#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/Effort.h"
#include "tests/faults/FaultyDisk.h"
#include "tests/faults/OtherConnection.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Query.h"

namespace qel::log::analytics {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using test::FaultyDisk;
using test::OtherConnection;
using test::query;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto Items = CipDatabaseClientInterface::Items;

/// The pair over real databases in the fixture's directory.
class DatabasePairFaultsTest : public test::DatabaseDirectory {
 protected:
  DatabasePairFaultsTest() {
    storage_.parameter.databasePath = data_;
    pair_.initialize(storage_.parameter);
  }

  void insert(const std::string& message) {
    pair_.insert(
        std::make_unique<items::CipInfoItem>(items::CipInfoItem::Area::SendingItems,
                                             items::CipInfoItem::Severity::Exception, message),
        Items);
  }

  std::vector<std::string> count(const std::string& condition) const {
    std::vector<std::string> counts;
    for (const char* const file : {"ItemDatabase.db", "SupportDatabase.db"}) {
      counts.push_back(query(data_ / file, "SELECT count(*) FROM Items WHERE " + condition)[0]);
    }
    return counts;
  }

  FaultyDisk disk_{data_};
  test::MemoryStorage storage_;
  CipDatabases pair_{std::make_unique<CipDatabaseClient>(),
                     std::make_unique<SupportDatabaseClient>(std::nullopt)};
};

TEST_F(DatabasePairFaultsTest, WaitForAFileThatAnotherProcessHolds) {
  const std::vector<std::chrono::seconds> times =
      test::longForm() ? std::vector{1s, 10s, 60s} : std::vector{1s};
  int rows = 0;
  for (const auto held : times) {
    for (const char* const file : {"ItemDatabase.db", "SupportDatabase.db"}) {
      const OtherConnection other(data_ / file);
      EXPECT_TRUE(other.execute("BEGIN IMMEDIATE"));
      const auto end = steady_clock::now() + held;
      while (steady_clock::now() < end) {
        insert("row " + std::to_string(++rows));
        std::this_thread::sleep_for(20ms);
      }
    }
  }
  pair_.join();
  EXPECT_FALSE(pair_.errorOccurred());
  test::measured() << rows << " rows stored after locks of up to " << times.back() / 1s << " s\n";
  EXPECT_THAT(count("TRUE"), ElementsAre(std::to_string(rows), std::to_string(rows)));
  EXPECT_EQ(logged().find("is held by another process; waiting") != std::string::npos,
            test::longForm());
}

TEST_F(DatabasePairFaultsTest, AHeldFileDoesNotKeepTheHostFromEnding) {
  const OtherConnection other(data_ / "SupportDatabase.db");
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE"));
  insert("lost");
  const auto begin = steady_clock::now();
  utilities::setExitDeadline(300ms);
  pair_.join();
  EXPECT_LT(steady_clock::now() - begin, 1300ms);
  utilities::setExitDeadline(std::nullopt);
  EXPECT_THAT(logged(), HasSubstr("SupportDatabase.db\": BEGIN failed, so nothing of its "
                                  "transaction is stored: database is locked"));
}

TEST_F(DatabasePairFaultsTest, AStalledDiskCostsTheQueueButNeverTheHost) {
  insert("written when the disk comes back");
  disk_.stall();
  disk_.awaitStalledWriter();
  const auto begin = steady_clock::now();
  for (int row = 0; row < 10'000; ++row) {
    insert("lost");
  }
  test::measured() << "10,000 items added beside it in " << (steady_clock::now() - begin) / 1us
                   << " us\n";
  EXPECT_LT(steady_clock::now() - begin, 5s);
  EXPECT_FALSE(pair_.errorOccurred());
  auto overflowing = std::async(std::launch::async, [&] { insert("one too many"); });
  while (!pair_.errorOccurred()) {
    std::this_thread::yield();
  }
  insert("dropped");
  EXPECT_NE(overflowing.wait_for(0s), std::future_status::ready)
      << "the marker is written on the thread that adds, so it waits as long as that takes";
  disk_.heal();
  overflowing.get();
  pair_.join();
  EXPECT_THAT(count("json LIKE '%critical level of added data%'"), ElementsAre("1", "1"));
  EXPECT_THAT(count("TRUE"), ElementsAre("2", "2"));
}

}  // namespace
}  // namespace qel::log::analytics
