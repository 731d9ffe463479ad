#include <fcntl.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "host/QelUtilities/Exception.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/support/FakeConnection.h"

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
namespace {

using namespace testing;
using Batch = std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>>;

constexpr const char* lossLogged = "so nothing of its transaction is stored: ";

/// `ForGood` makes all later calls fail too, `Full` only those that write.
enum class DiskFault { Once, ForGood, Full };

std::atomic<int> callsUntilFault{-1};
std::atomic<DiskFault> plannedFault;
std::atomic<bool> hasFailed{false};

/// Counts the call. True when it must fail.
bool fails(bool isWrite) {
  callsUntilFault -= callsUntilFault > 0 ? 1 : 0;
  if (callsUntilFault != 0 || (plannedFault == DiskFault::Full && !isWrite)) {
    return false;
  }
  if (plannedFault == DiskFault::Once) {
    callsUntilFault = -1;
  }
  hasFailed = true;
  // The error of a network disk: SQLite reports a failed read with EIO as a corrupt file.
  errno = plannedFault == DiskFault::Full ? ENOSPC : ETIMEDOUT;
  return true;
}

/// Replaces a system call of SQLite by one that can fail.
template <auto call, bool isWrite = false, typename Result, typename... Arguments>
bool replace(const char* name, Result (*)(Arguments...)) {
  const auto callOrFail =
      +[](Arguments... arguments) -> Result { return fails(isWrite) ? -1 : call(arguments...); };
  auto* const system = sqlite3_vfs_find("unix");
  return system->xSetSystemCall(system, name, reinterpret_cast<sqlite3_syscall_ptr>(callOrFail)) ==
         SQLITE_OK;
}

int openFile(const char* file, int flags, int mode) { return open(file, flags, mode); }

const bool isReplaced =
    replace<openFile>("open", openFile) && replace<pread64>("pread64", pread64) &&
    replace<pwrite64, true>("pwrite64", pwrite64) &&
    replace<ftruncate64>("ftruncate", ftruncate64) && replace<unlink>("unlink", unlink);

Batch batchOf(const std::string& name) {
  return {{name + '1', Items}, {name + '2', Items}, {name + '3', Items}};
}

class StorageFaultsTest : public DatabaseDirectory {
 protected:
  /// Whether a call has failed.
  bool meetFault(int nthCall, DiskFault fault, bool hasEarlierRows) const {
    emptyDirectory();
    std::vector<std::string> batches;
    const auto insert = [&](CipDatabaseClient& client, const std::string& name) {
      batches.push_back(name);
      client.insertMultiple(batchOf(name));
    };
    if (hasEarlierRows) {
      CipDatabaseClient earlier;
      earlier.initialize(data_);
      insert(earlier, "earlier");
    }
    const auto lossesBefore = timesLogged(lossLogged);
    CipDatabaseClient client;
    EXPECT_TRUE(isReplaced) << "no system call can be made to fail";
    hasFailed = false;
    plannedFault = fault;
    callsUntilFault = nthCall;
    try {
      client.initialize(data_);
      insert(client, "before");
      std::vector<int> first{1};
      client.deleteByIds(Items, first);
      client.vacuum();
      insert(client, "after");
      callsUntilFault = -1;
    } catch (const qel::exception& failure) {
      EXPECT_THAT(failure.what(), HasSubstr(sendingFile_));
      callsUntilFault = -1;
      client.initialize(data_);
    }
    insert(client, "healed");

    const auto stored = textsIn(sendingFile_);
    EXPECT_TRUE(stored.contains("healed2"));
    int missing = 0;
    for (const auto& batch : batches) {
      const auto times = stored.count(batch + '2');
      missing += times == 0 ? 1 : 0;
      EXPECT_LE(times, 1U) << batch;
      EXPECT_EQ(stored.count(batch + '3'), times) << batch;
      const bool isDeletedFrom = batch == batches.front();
      EXPECT_TRUE(isDeletedFrom || stored.count(batch + '1') == times) << batch;
    }
    EXPECT_EQ(missing, timesLogged(lossLogged) - lossesBefore) << "each lost batch is logged";
    EXPECT_LE(missing, fault == DiskFault::Once ? 1 : 2);
    EXPECT_THAT(query(sendingFile_, "PRAGMA auto_vacuum"), ElementsAre("2"));
    EXPECT_EQ(timesLogged("it was set aside"), 0) << "a disk fault does not damage the file";
    return hasFailed;
  }
};

TEST_F(StorageFaultsTest, StoresABatchWholeOrNotAtAllWhicheverCallFails) {
  int faults = 0;
  for (const auto fault : {DiskFault::Once, DiskFault::ForGood, DiskFault::Full}) {
    for (const bool hasEarlierRows : {false, true}) {
      for (int call = 1; meetFault(call, fault, hasEarlierRows); ++call, ++faults) {
        ASSERT_FALSE(HasFailure())
            << "fault " << int(fault) << " of call " << call << ", earlier rows " << hasEarlierRows;
      }
    }
  }
  EXPECT_GT(faults, 300);
  EXPECT_GT(timesLogged(std::string(lossLogged) + "database or disk is full"), 0);
  measured() << faults << " faults\n";
}

TEST_F(StorageFaultsTest, MarksEachCrossingOfTheCapOnceAndShrinksTheFile) {
  CipDatabaseClient client;
  client.initialize(data_);
  const Batch fiveMegabytes(500, {std::string(10'000, 'x'), Items});
  const int crossings = effort(2, 20);
  for (int crossing = 1; crossing <= crossings; ++crossing) {
    for (int batch = 1; batch <= 8; ++batch) {
      client.insertMultiple(fiveMegabytes);
    }
    const auto rows = client.getAllItems();
    EXPECT_THAT(rows, SizeIs(6 * fiveMegabytes.size() + 1)) << "six batches reach the cap";
    EXPECT_THAT(rows.rbegin()->second, HasSubstr("CriticalLarge"));
    client.deleteItems(rows);
    client.vacuum();
    EXPECT_LT(client.getDatabaseFileSize(), 100'000U);
  }
  measured() << crossings << " crossings, file of " << client.getDatabaseFileSize().value()
             << " bytes after the last\n";
}

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

/// The pass reads the rows first, and deletes them by ID after the server has accepted them.
TEST_F(StorageFaultsTest, KeepsLaterRowsWhenTheFileIsReplacedInTheMiddleOfAPass) {
  CipDatabaseClient client;
  client.initialize(data_);
  client.insertMultiple({"1", "2"}, Items);
  FakeConnection connection;
  connection.failure = [&] {
    if (timesLogged("it was set aside") == 0) {
      write(sendingFile_, std::string(8192, '\xee'));
      client.insertMultiple(batchOf("lost"));
      EXPECT_EQ(timesLogged("it was set aside"), 1);
    }
    client.insertMultiple(batchOf(std::to_string(connection.packages.size()) + "new"));
  };
  const auto logger = log::LogManager::instance().getLogger("pass");
  details::SendingPass(client, connection, *logger, 1).run();
  EXPECT_THAT(textsIn(sendingFile_),
              ElementsAre("1new1", "1new2", "1new3", "2new1", "2new2", "2new3"));
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

}  // namespace
}  // namespace qel::test

/// Replaces the system's function, which is no replaceable call of SQLite.
extern "C" int fdatasync(int file) {
  return qel::test::fails(false) ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}
