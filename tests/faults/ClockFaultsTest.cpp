#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "tests/faults/DatabaseDirectory.h"

static std::atomic<time_t> ahead{0};  ///< seconds that are added to the wall clock alone

/// Replaces the system's function, for the standard library.
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const long result = syscall(SYS_clock_gettime, clock, time);
  time->tv_sec += clock == CLOCK_REALTIME ? ahead.load() : 0;
  return static_cast<int>(result);
}

/// Replaces the system's function, for SQLite.
extern "C" int gettimeofday(timeval* time, void* /*zone*/) noexcept {
  timespec now{};
  const int result = clock_gettime(CLOCK_REALTIME, &now);
  *time = {now.tv_sec, 0};
  return result;
}

namespace qel::test {

using namespace testing;

using StorageFaultsTest = DatabaseDirectory;

TEST_F(StorageFaultsTest, UsesTheDatabaseWithoutAThreadForRetention) {
  pthread_attr_t usual;
  pthread_getattr_default_np(&usual);
  auto attributes = usual;
  pthread_attr_setstacksize(&attributes, std::size_t{1} << 60U);  // No thread gets such a stack.
  EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
  SupportDatabaseClient client(1s);
  client.initialize(data_);
  pthread_setattr_default_np(&usual);
  client.insertMultiple(batchOf("a"));
  EXPECT_THAT(client.getAllItems(), SizeIs(3));
}

TEST_F(StorageFaultsTest, AClockThatJumpsMovesRetentionButNoPeriods) {
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  const Activation activation{data_};
  const auto pair = filePair();
  pair->initialize(activation.parameter);
  const auto insert = [&](const std::string& event) {
    pair->insert(std::make_unique<items::CrashReportItem>(event), Items);
  };
  constexpr time_t year = 365 * 24 * 3600;
  for (const auto& [jump, kept] :
       {std::pair(year, "after"), {-year, "before after"}, {-7200, "before after"}}) {
    SCOPED_TRACE(jump);
    query(supportFile_, "DELETE FROM Items");
    insert("before");
    pair->join();
    ahead += jump;
    const auto jumped = steady_clock::now();
    const auto after = query(supportFile_, "SELECT strftime('%s', 'now')")[0];
    insert("after");
    waitUntil([&] { return query(supportFile_, "SELECT * FROM Items").size() == 2; });
    EXPECT_LT(steady_clock::now() - jumped, 5s) << "the period is one second";
    const std::string isNow = ") - " + after + " BETWEEN 0 AND 5";
    EXPECT_EQ(query(supportFile_, "SELECT strftime('%s', json_extract(json, '$.Timestamp')" +
                                      isNow + ", strftime('%s', timestamp_utc" + isNow +
                                      " FROM Items ORDER BY ID DESC")[0],
              "1|1");
    details::DatabaseAdapterTimestampDecorator(
        std::make_shared<db::sql::SqlDatabaseAdapter>(supportFile_))
        .deleteEntriesOlderThan("Items", 1h);
    EXPECT_EQ(query(supportFile_,
                    "SELECT group_concat(json_extract(json, '$.Event'), ' ') FROM Items")[0],
              kept);
  }
  ahead = 0;
}

}  // namespace qel::test
