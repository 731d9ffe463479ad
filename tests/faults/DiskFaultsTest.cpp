#include <fcntl.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/QelUtilities/Exception.h"
#include "tests/faults/DatabaseDirectory.h"

namespace qel::test {
namespace {

using namespace testing;

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

class DiskFaultsTest : public DatabaseDirectory {
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

TEST_F(DiskFaultsTest, StoresABatchWholeOrNotAtAllWhicheverCallFails) {
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

}  // namespace
}  // namespace qel::test

/// Replaces the system's function, which is no replaceable call of SQLite.
extern "C" int fdatasync(int file) {
  return qel::test::fails(false) ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}
