#include <atomic>
#include <chrono>
#include <ctime>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/Patience.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/Effort.h"
#include "tests/faults/OtherConnection.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Query.h"
#include "tests/support/Tally.h"

namespace {

std::atomic<time_t> ahead{0};  ///< seconds by which the wall clock is, the steady clock is not

}  // namespace

/// In place of the system's, for the standard library and SQLite.
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const long result = syscall(SYS_clock_gettime, clock, time);
  time->tv_sec += clock == CLOCK_REALTIME ? ahead.load() : 0;
  return static_cast<int>(result);
}

extern "C" int gettimeofday(timeval* time, void* /*zone*/) noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  *time = {now.tv_sec, now.tv_nsec / 1000};
  return 0;
}

namespace qel::log::analytics {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using std::chrono::system_clock;
using test::OtherConnection;
using test::query;
using testing::HasSubstr;

constexpr auto Items = CipDatabaseClientInterface::Items;
constexpr time_t year = 365 * 24 * 3600;

void insertInto(CipDatabases& pair, const std::string& event) {
  pair.insert(std::make_unique<items::CrashReportItem>(event), Items);
}

/// The pair over real databases in the fixture's directory.
class DatabasePairFaultsTest : public test::DatabaseDirectory {
 protected:
  DatabasePairFaultsTest() {
    storage_.parameter.databasePath = data_;
    pair_.initialize(storage_.parameter);
  }

  test::MemoryStorage storage_;
  CipDatabases pair_{std::make_unique<CipDatabaseClient>(),
                     std::make_unique<SupportDatabaseClient>(std::nullopt)};
  const std::filesystem::path files_[2] = {data_ / "ItemDatabase.db", data_ / "SupportDatabase.db"};
};

TEST_F(DatabasePairFaultsTest, AFileThatAnotherProcessHoldsDelaysItsRowsButNotTheExit) {
  const std::vector<std::chrono::seconds> times =
      test::longForm() ? std::vector{1s, 10s, 60s} : std::vector{1s};
  int rows = 0;
  for (const auto held : times) {
    for (const auto& file : files_) {
      const OtherConnection other(file);
      EXPECT_TRUE(other.execute("BEGIN IMMEDIATE"));
      const auto end = steady_clock::now() + held;
      while (steady_clock::now() < end) {
        insertInto(pair_, std::to_string(++rows));
        std::this_thread::sleep_for(20ms);
      }
    }
  }
  pair_.join();
  EXPECT_FALSE(pair_.errorOccurred());
  test::measured() << rows << " rows stored after locks of up to " << times.back() / 1s << " s\n";
  for (const auto& file : files_) {
    EXPECT_EQ(query(file, "SELECT count(*) FROM Items")[0], std::to_string(rows));
  }

  const OtherConnection other(files_[1]);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE"));
  insertInto(pair_, "lost");
  const auto begin = steady_clock::now();
  utilities::setExitDeadline(300ms);
  pair_.join();
  EXPECT_LT(steady_clock::now() - begin, 1300ms);
  utilities::setExitDeadline(std::nullopt);
  EXPECT_THAT(logged(), HasSubstr("SupportDatabase.db\": BEGIN failed, so nothing of its "
                                  "transaction is stored: database is locked"));
}

TEST_F(DatabasePairFaultsTest, LoopsKeepTheirPeriodsAndRetentionGoesByTheClock) {
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  const auto& file = files_[1];
  for (const auto& [jump, kept] :
       {std::pair(year, "after"), {-year, "before after"}, {-7200, "before after"}}) {
    SCOPED_TRACE(jump);
    query(file, "DELETE FROM Items");
    insertInto(pair_, "before");
    pair_.join();
    ahead += jump;
    const auto jumped = steady_clock::now();
    const auto after = std::to_string(system_clock::to_time_t(system_clock::now()));
    insertInto(pair_, "after");
    while (query(file, "SELECT * FROM Items").size() < 2 && steady_clock::now() - jumped < 20s) {
      std::this_thread::sleep_for(5ms);
    }
    EXPECT_LT(steady_clock::now() - jumped, 5s) << "the period is one second";
    EXPECT_EQ(query(file, "SELECT strftime('%s', json_extract(json, '$.Timestamp')) - " + after +
                              " BETWEEN 0 AND 5, strftime('%s', timestamp_utc) - " + after +
                              " BETWEEN 0 AND 5 FROM Items ORDER BY ID DESC")[0],
              "1|1");

    details::DatabaseAdapterTimestampDecorator(std::make_shared<db::sql::SqlDatabaseAdapter>(file))
        .deleteEntriesOlderThan("Items", 1h);
    EXPECT_EQ(query(file, "SELECT group_concat(json_extract(json, '$.Event'), ' ') FROM Items")[0],
              kept);
  }
  ahead = 0;
}

/// Renders only when it may.
class BlockedItem : public json::ToJsonInterface {
 public:
  BlockedItem(test::Tally& renderings, std::shared_future<void> mayRender)
      : renderings_(renderings), mayRender_(std::move(mayRender)) {}
  std::string toJson() const override {
    renderings_.add();
    mayRender_.wait();
    return "what a customer typed";
  }

 private:
  test::Tally& renderings_;
  const std::shared_future<void> mayRender_;
};

TEST_F(DatabasePairFaultsTest, OnlyTheReportOfAFullQueueIsLogged) {
  test::Tally renderings;
  std::promise<void> mayRender;
  pair_.insert(std::make_unique<BlockedItem>(renderings, mayRender.get_future().share()), Items);
  EXPECT_TRUE(renderings.reaches(1));
  while (!pair_.errorOccurred()) {
    insertInto(pair_, "lost");
  }
  mayRender.set_value();
  pair_.join();
  EXPECT_THAT(logged(), testing::MatchesRegex("[^\n]*the queue is full, so storage has ended: "
                                              "\\{\"Category\": \"CIP\"[^\n]*\n"));
}

/// With its mutex held, so that no thread of the host may add meanwhile.
TEST_F(DatabasePairFaultsTest, AWorkerThatMeetsTheFullQueueWaitsNoLongerThanTheHost) {
  const OtherConnection other(files_[1]);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE"));
  std::promise<void> mayRender;
  test::Tally renderings;
  pair_.insert(std::make_unique<BlockedItem>(renderings, mayRender.get_future().share()), Items);
  EXPECT_TRUE(renderings.reaches(1));
  for (int row = 0; row < 10'000; ++row) {
    insertInto(pair_, "lost");
  }
  const utilities::Patience worker(utilities::Patience::unlimited);
  const auto begin = steady_clock::now();
  insertInto(pair_, "one too many");
  EXPECT_LT(steady_clock::now() - begin, 1s);
  EXPECT_TRUE(other.execute("COMMIT"));
  mayRender.set_value();
}

TEST(StalledWriterTest, CostsTheQueueButNeverTheHost) {
  test::MemoryStorage storage;
  auto& pair = storage.initialized();
  test::Tally writers;
  std::promise<void> diskComesBack;
  const auto isBack = diskComesBack.get_future().share();
  storage.support->beforeBatch = [&] {
    writers.add();
    isBack.wait();
  };
  insertInto(pair, "written when the disk comes back");
  EXPECT_TRUE(writers.reaches(1));
  const auto begin = steady_clock::now();
  for (int row = 0; row < 10'000; ++row) {
    insertInto(pair, "lost");
  }
  test::measured() << "10,000 items added beside it in " << (steady_clock::now() - begin) / 1us
                   << " us\n";
  EXPECT_LT(steady_clock::now() - begin, 5s);
  EXPECT_FALSE(pair.errorOccurred());
  auto overflowing = std::async(std::launch::async, [&] { insertInto(pair, "one too many"); });
  while (!pair.errorOccurred()) {
    std::this_thread::yield();
  }
  insertInto(pair, "dropped");
  EXPECT_NE(overflowing.wait_for(0s), std::future_status::ready)
      << "the marker is written on the thread that adds, so it waits as long as that takes";
  diskComesBack.set_value();
  overflowing.get();
  EXPECT_THAT(storage.recorded(), testing::UnorderedElementsAre(HasSubstr("written when"),
                                                                HasSubstr("|CriticalLarge|")));
  EXPECT_THAT(storage.sending->texts(Items), testing::SizeIs(2));
}

}  // namespace
}  // namespace qel::log::analytics
