// A program of its own: the clock that it sets is the whole process's.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Query.h"
#include "tests/support/TemporaryDirectory.h"

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
using test::query;

constexpr auto Items = CipDatabaseClientInterface::Items;
constexpr time_t year = 365 * 24 * 3600;

class ClockFaultsTest : public testing::Test {
 protected:
  ~ClockFaultsTest() override { ahead = 0; }

  static void setClock(time_t utc) { ahead += utc - system_clock::to_time_t(system_clock::now()); }

  static time_t now() { return system_clock::to_time_t(system_clock::now()); }
};

TEST_F(ClockFaultsTest, LoopsKeepTheirPeriodsAndRetentionGoesByTheClock) {
  struct Jump {
    const char* name;
    const char* zone;
    time_t from;  ///< 0: the machine's own time
    time_t by;
    std::string kept;
  };
  const Jump jumps[] = {
      {"a year forward", "UTC", 0, year, "after"},
      {"a year back", "UTC", 0, -year, "before after"},
      {"two hours back", "UTC", 0, -7200, "before after"},
      {"midnight, 31 December", "America/New_York", 1798761599, 0, "before after"},
      {"summer time begins", "Europe/Berlin", 1806195599, 0, "before after"},
      {"summer time ends", "Europe/Berlin", 1792889999, 0, "before after"},
  };
  for (const auto& jump : jumps) {
    SCOPED_TRACE(jump.name);
    setenv("TZ", jump.zone, 1);
    tzset();
    ahead = 0;
    if (jump.from != 0) {
      setClock(jump.from);
    }
    const test::TemporaryDirectory directory;
    test::MemoryStorage storage;
    storage.parameter.databasePath = directory.text();
    CipDatabases pair(std::make_unique<CipDatabaseClient>(),
                      std::make_unique<SupportDatabaseClient>(std::nullopt));
    pair.initialize(storage.parameter);
    const auto insert = [&](const std::string& message) {
      pair.insert(
          std::make_unique<items::CipInfoItem>(items::CipInfoItem::Area::SendingItems,
                                               items::CipInfoItem::Severity::Exception, message),
          Items);
    };
    insert("before");
    pair.join();
    ahead += jump.by;
    const auto jumped = steady_clock::now();
    const time_t clockAfterJump = now();
    insert("after");
    while (pair.getCipDatabase().getAllItems().size() < 2 && steady_clock::now() - jumped < 20s) {
      std::this_thread::sleep_for(5ms);
    }
    EXPECT_LT(steady_clock::now() - jumped, 5s) << "the period is one second";

    const auto file = directory.path() / "SupportDatabase.db";
    const auto stamps = query(file,
                              "SELECT strftime('%s', timestamp_utc), strftime('%s', "
                              "json_extract(json, '$.Timestamp')) FROM Items ORDER BY ID DESC");
    const time_t written = std::stol(stamps.at(0));
    const time_t stamped = std::stol(stamps[0].substr(stamps[0].find('|') + 1));
    EXPECT_GE(stamped, clockAfterJump) << stamps[0];
    EXPECT_GE(written, stamped) << stamps[0];
    EXPECT_LE(written, now()) << stamps[0];

    details::DatabaseAdapterTimestampDecorator(std::make_shared<db::sql::SqlDatabaseAdapter>(file))
        .deleteEntriesOlderThan("Items", 1h);
    EXPECT_EQ(query(file,
                    "SELECT group_concat(json_extract(json, '$.Details.Message'), ' ') "
                    "FROM Items")[0],
              jump.kept);
  }
}

}  // namespace
}  // namespace qel::log::analytics
