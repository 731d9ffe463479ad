#include <atomic>
#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <pthread.h>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Patience.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/Effort.h"
#include "tests/faults/FaultyDisk.h"
#include "tests/faults/OtherConnection.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/Query.h"

namespace qel::log::analytics {
namespace {

namespace fs = std::filesystem;
using test::DiskFault;
using test::query;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using Batch = std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>>;

constexpr auto Items = CipDatabaseClientInterface::Items;

Batch batchOf(const std::string& name) {
  return {{name + '1', Items}, {name + '2', Items}, {name + '3', Items}};
}

std::atomic<bool> hasThreads{true};

}  // namespace
}  // namespace qel::log::analytics

/// In place of the system's: there may be no thread to be had.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) {
  using Create = decltype(&pthread_create);
  static const auto systems = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  return qel::log::analytics::hasThreads ? systems(thread, attributes, start, argument) : EAGAIN;
}

namespace qel::log::analytics {
namespace {

class StorageFaultsTest : public test::DatabaseDirectory {
 protected:
  int filesSetAside() const {
    return static_cast<int>(
        std::ranges::count_if(fs::directory_iterator(data_), [](const auto& entry) {
          return entry.path().filename().string().find(".corrupt-") != std::string::npos;
        }));
  }

  std::set<std::string> texts() const {
    const auto rows = query(file_, "SELECT json FROM Items");
    std::set<std::string> texts(rows.begin(), rows.end());
    EXPECT_THAT(rows, SizeIs(texts.size())) << "a row stands there twice";
    return texts;
  }

  int lossesLogged() const {
    const auto text = logged();
    int losses = 0;
    for (std::size_t at = 0; (at = text.find("so nothing of its", at)) != std::string::npos; ++at) {
      ++losses;
    }
    return losses;
  }

  bool meetFault(int nthCall, DiskFault fault, bool hasEarlierRows) const;

  const fs::path file_ = data_ / "ItemDatabase.db";
};

/// Whether the nth call was made, so that it failed.
bool StorageFaultsTest::meetFault(int nthCall, DiskFault fault, bool hasEarlierRows) const {
  emptyDirectory();
  if (hasEarlierRows) {
    CipDatabaseClient earlier;
    earlier.initialize(data_);
    earlier.insertMultiple(batchOf("earlier"));
  }
  CipDatabaseClient client;
  bool isOpened = false;
  const auto lossesBefore = lossesLogged();
  test::failDiskAt(nthCall, fault);
  try {
    client.initialize(data_);
    isOpened = true;
    client.insertMultiple(batchOf("before"));
    std::vector<int> first{1};
    client.deleteByIds(Items, first);
    client.vacuum();
    client.insertMultiple(batchOf("after"));
  } catch (const qel::exception& failure) {
    EXPECT_THAT(failure.what(), HasSubstr(file_));
  }
  const bool hasFailed = test::healDisk();
  if (!isOpened) {
    client.initialize(data_);
  }
  client.insertMultiple(batchOf("healed"));
  const auto stored = texts();
  int missing = 0;
  for (const std::string name : {"before", "after"}) {
    const bool isStored = stored.contains(name + '2');
    missing += isStored ? 0 : 1;
    EXPECT_EQ(stored.contains(name + '3'), isStored) << name;
    const bool isDeletedFrom = name == "before" && !hasEarlierRows;
    EXPECT_TRUE(isDeletedFrom || stored.contains(name + '1') == isStored) << name;
  }
  for (const char* const row : {"healed1", "healed2", "healed3"}) {
    EXPECT_TRUE(stored.contains(row));
  }
  EXPECT_TRUE(!hasEarlierRows || (stored.contains("earlier2") && stored.contains("earlier3")));
  if (isOpened) {
    EXPECT_EQ(missing, lossesLogged() - lossesBefore) << "a batch is stored, or its loss is told";
    EXPECT_LE(missing, fault == DiskFault::Once ? 1 : 2);
  }
  EXPECT_THAT(query(file_, "PRAGMA integrity_check"), ElementsAre("ok"));
  EXPECT_THAT(query(file_, "PRAGMA auto_vacuum"), ElementsAre("2"));
  EXPECT_EQ(filesSetAside(), 0) << "a fault of the disk is no corruption";
  return hasFailed;
}

TEST_F(StorageFaultsTest, ABatchIsStoredWholeOrNotAtAllWhicheverCallFails) {
  int faults = 0;
  for (const auto fault : {DiskFault::Once, DiskFault::ForGood, DiskFault::Full}) {
    for (const bool hasEarlierRows : {false, true}) {
      int nthCall = 1;
      while (meetFault(nthCall, fault, hasEarlierRows) && !HasFailure()) {
        ++nthCall;
      }
      EXPECT_FALSE(HasFailure()) << "fault " << int(fault) << " of call " << nthCall
                                 << ", earlier rows " << hasEarlierRows;
      faults += nthCall - 1;
    }
  }
  EXPECT_GT(faults, 300);
  EXPECT_THAT(logged(),
              HasSubstr("nothing of its transaction is stored: database or disk is full"));
  test::measured() << faults << " faults\n";
}

TEST_F(StorageFaultsTest, EachCrossingOfTheCapIsMarkedOnceAndTheFileShrinks) {
  CipDatabaseClient client;
  client.initialize(data_);
  const Batch fiveMegabytes(500, {std::string(10'000, 'x'), Items});
  const int crossings = test::effort(2, 20);
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
  test::measured() << crossings << " crossings, file of " << client.getDatabaseFileSize().value()
                   << " bytes after the last\n";
}

TEST_F(StorageFaultsTest, AFileIsKeptIfItsTablesCanBeUsedAndOtherwiseSetAside) {
  const std::string ours = "INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT";
  const std::string row = "INSERT INTO Items(ID, json) VALUES (7, 'old'); ";
  const struct {
    std::string making;
    bool isKept;
  } files[] = {
      {"CREATE TABLE Items(ID " + ours + ");" + row, true},
      {"PRAGMA auto_vacuum = 2; CREATE TABLE \"items\" (\"ID\" " + ours + ", more);" + row, true},
      {"CREATE TABLE Others(a)", true},
      {"CREATE VIEW Environments AS SELECT 1 AS ID, 'x' AS json", false},
      {"PRAGMA auto_vacuum = 2; CREATE TABLE items(ID INTEGER PRIMARY KEY, text)", false},
  };
  for (const auto& [making, isKept] : files) {
    SCOPED_TRACE(making);
    emptyDirectory();
    EXPECT_TRUE(test::OtherConnection(file_).execute(making));
    test::write(file_.string() + "-journal", "left behind");
    CipDatabaseClient client;
    client.initialize(data_);
    client.insertMultiple({{"new", Items}, {"new", CipDatabaseClientInterface::Environments}});
    const bool hasOldRow = making.ends_with(row);
    EXPECT_THAT(client.getAllItems(), SizeIs(hasOldRow ? 2 : 1));
    EXPECT_THAT(client.getAll(CipDatabaseClientInterface::Environments).second, SizeIs(1));
    EXPECT_EQ(filesSetAside(), isKept ? 0 : 1);
    EXPECT_THAT(query(file_, "SELECT json FROM Items"), SizeIs(hasOldRow ? 2 : 1));
    const utilities::Patience worker(utilities::Patience::unlimited);
    client.vacuum();
    EXPECT_THAT(query(file_, "PRAGMA auto_vacuum"), ElementsAre("2"));
  }
  EXPECT_THAT(logged(), HasSubstr("it was set aside as"));
}

TEST_F(StorageFaultsTest, WithoutAThreadForRetentionTheDatabaseIsUsedAllTheSame) {
  std::atomic<int> breaks{0};
  utilities::debugger::Debugger::setHook([&] { ++breaks; });
  SupportDatabaseClient client(std::chrono::seconds(1));
  hasThreads = false;
  client.initialize(data_);
  hasThreads = true;
  utilities::debugger::Debugger::setHook({});
  EXPECT_EQ(breaks, 1);
  client.insertMultiple(batchOf("a"));
  EXPECT_THAT(client.getAllItems(), SizeIs(3));
}

/// The pass has read the rows, and deletes them by their IDs once they are accepted.
TEST_F(StorageFaultsTest, AReplacementInTheMiddleOfAPassCostsNoRowThatCameLater) {
  CipDatabaseClient client;
  client.initialize(data_);
  client.insertMultiple({"1", "2"}, Items);
  test::FakeConnection connection;
  connection.failure = [&] {
    if (filesSetAside() == 0) {
      test::write(file_, std::string(8192, '\xee'));
      client.insertMultiple(batchOf("lost"));
      EXPECT_EQ(filesSetAside(), 1);
    }
    client.insertMultiple(batchOf(std::to_string(connection.packages.size()) + "new"));
  };
  const auto logger = LogManager::instance().getLogger("pass");
  details::SendingPass(client, connection, *logger, 1).run();
  EXPECT_THAT(connection.packages, SizeIs(2));
  EXPECT_THAT(texts(), ElementsAre("1new1", "1new2", "1new3", "2new1", "2new2", "2new3"));
}

}  // namespace
}  // namespace qel::log::analytics
