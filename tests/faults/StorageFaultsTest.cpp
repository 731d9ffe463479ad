#include <filesystem>
#include <functional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Exception.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/faults/Effort.h"
#include "tests/faults/FaultyDisk.h"
#include "tests/faults/OtherConnection.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/Files.h"
#include "tests/support/Query.h"

namespace qel::log::analytics {
namespace {

namespace fs = std::filesystem;
using test::FaultyDisk;
using test::OtherConnection;
using test::query;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using Batch = std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>>;

constexpr auto Items = CipDatabaseClientInterface::Items;

Batch batchOf(const std::string& name, int rows = 3) {
  Batch batch;
  for (int row = 1; row <= rows; ++row) {
    batch.emplace_back(name + std::to_string(row), Items);
  }
  return batch;
}

class StorageFaultsTest : public test::DatabaseDirectory {
 protected:
  int filesSetAside() const {
    return static_cast<int>(
        std::ranges::count_if(fs::directory_iterator(data_), [](const auto& entry) {
          return entry.path().filename().string().find(".corrupt-") != std::string::npos;
        }));
  }

  static std::set<std::string> textsIn(CipDatabaseClientInterface& client) {
    std::set<std::string> texts;
    for (const auto& [id, text] : client.getAllItems()) {
      EXPECT_TRUE(texts.insert(text).second) << text << " stands there twice";
    }
    return texts;
  }

  std::ptrdiff_t lossesLogged() const {
    const auto text = logged();
    const std::regex loss("so nothing of its transaction is stored");
    return std::distance(std::sregex_iterator(text.begin(), text.end(), loss), {});
  }

  void meetFault(FaultyDisk& disk, int nthCall, FaultyDisk::Persistence persistence,
                 int earlierRows);

  const fs::path file_ = data_ / "ItemDatabase.db";
};

void StorageFaultsTest::meetFault(FaultyDisk& disk, int nthCall,
                                  FaultyDisk::Persistence persistence, int earlierRows) {
  fs::remove_all(data_);
  fs::create_directory(data_);
  if (earlierRows > 0) {
    CipDatabaseClient earlier;
    earlier.initialize(data_);
    earlier.insertMultiple(batchOf("earlier", earlierRows));
  }
  CipDatabaseClient client;
  bool opened = false;
  const auto lossesBefore = lossesLogged();
  disk.failAt(nthCall, persistence);
  try {
    client.initialize(data_);
    opened = true;
    client.insertMultiple(batchOf("before"));
    std::vector<int> ids{1};
    client.deleteByIds(Items, ids);
    client.vacuum();
    client.insertMultiple(batchOf("after"));
  } catch (const qel::exception& failure) {
    EXPECT_THAT(failure.what(), HasSubstr(file_));
  }
  disk.heal();
  if (!opened) {
    client.initialize(data_);
  }
  client.insertMultiple(batchOf("healed"));
  const auto texts = textsIn(client);
  int missing = 0;
  for (const std::string name : {"before", "after", "healed"}) {
    // Of a database that was empty before, the deletion takes the first row.
    const bool isDeletedFrom = name == "before" && earlierRows == 0;
    const bool isStored = texts.contains(name + "2");
    EXPECT_EQ(texts.contains(name + "3"), isStored) << name;
    EXPECT_TRUE(isDeletedFrom || texts.contains(name + "1") == isStored) << name;
    missing += isStored ? 0 : 1;
  }
  EXPECT_TRUE(texts.contains("healed2"));
  if (opened) {
    EXPECT_EQ(missing, lossesLogged() - lossesBefore) << "a batch is stored, or its loss is told";
    EXPECT_LE(missing, persistence == FaultyDisk::Persistence::Once ? 1 : 2);
  }
  for (int row = 2; row <= earlierRows; ++row) {
    EXPECT_TRUE(texts.contains("earlier" + std::to_string(row)));
  }
  EXPECT_THAT(query(file_, "PRAGMA integrity_check"), ElementsAre("ok"));
  EXPECT_THAT(query(file_, "PRAGMA auto_vacuum"), ElementsAre("2"));
  EXPECT_EQ(filesSetAside(), 0) << "a fault of the disk is no corruption";
}

TEST_F(StorageFaultsTest, ABatchIsStoredWholeOrNotAtAllWhicheverCallFails) {
  FaultyDisk disk(data_);
  int faults = 0;
  for (const auto persistence : {FaultyDisk::Persistence::Once, FaultyDisk::Persistence::ForGood}) {
    for (const int earlierRows : {0, 3}) {
      for (int nthCall = 1; nthCall == 1 || (disk.hasFailed() && !HasFailure()); ++nthCall) {
        SCOPED_TRACE(testing::Message()
                     << "call " << nthCall
                     << (persistence == FaultyDisk::Persistence::Once ? " once" : " for good")
                     << ", earlier rows " << earlierRows);
        meetFault(disk, nthCall, persistence, earlierRows);
        ++faults;
      }
    }
  }
  EXPECT_GT(faults, 200);
  test::measured() << faults << " faults\n";
}

TEST_F(StorageFaultsTest, AFullDiskLosesNothingAndWorkIsResumed) {
  FaultyDisk disk(data_);
  CipDatabaseClient client;
  client.initialize(data_);
  client.insertMultiple({{std::string(300'000, 'x'), Items}, {"kept", Items}});
  std::vector<int> first{1};
  const std::vector<std::pair<std::function<void()>, std::size_t>> steps = {
      {[&] {
         client.insertMultiple({{std::string(100'000, 'y'), Items}, {"y", Items}});
       },
       4},
      {[&] { client.deleteByIds(Items, first); }, 3},
      {[&] { client.vacuum(); }, 3},
  };
  for (const auto& [step, rows] : steps) {
    const auto before = client.getAllItems();
    const auto size = fs::file_size(file_);
    disk.setCapacity(size + 600);  // A journal's header still fits.
    step();
    EXPECT_EQ(client.getAllItems(), before);
    EXPECT_EQ(fs::file_size(file_), size);
    disk.heal();
    step();
    EXPECT_THAT(client.getAllItems(), SizeIs(rows));
  }
  EXPECT_LT(fs::file_size(file_), 200'000U);
  EXPECT_THAT(query(file_, "PRAGMA integrity_check"), ElementsAre("ok"));
  EXPECT_THAT(logged(),
              HasSubstr("nothing of its transaction is stored: database or disk is full"));
}

TEST_F(StorageFaultsTest, EachCrossingOfTheCapIsMarkedOnceAndSendingMakesRoom) {
  CipDatabaseClient client;
  client.initialize(data_);
  const Batch fiveMegabytes(500, {std::string(10'000, 'x'), Items});
  const int crossings = test::effort(2, 20);
  for (int crossing = 1; crossing <= crossings; ++crossing) {
    std::size_t taken = 0;
    for (; client.getDatabaseFileSize() < 30'720'000U; ++taken) {
      client.insertMultiple(fiveMegabytes);
    }
    EXPECT_EQ(taken, 6U);
    client.insertMultiple(fiveMegabytes);
    client.insertMultiple(fiveMegabytes);
    std::size_t markers = 0;
    for (const auto& [id, text] : client.getAllItems()) {
      markers += text.find("CriticalLarge") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(markers, 1U);
    test::FakeConnection connection;
    SendingPass(client, connection, *LogManager::instance().getLogger("sending"), 1'000'000).run();
    EXPECT_EQ(connection.packages.size(), 31U);
    EXPECT_LT(client.getDatabaseFileSize(), 100'000U);
  }
  test::measured() << crossings << " crossings, file of " << client.getDatabaseFileSize().value()
                   << " bytes after the last\n";
}

TEST_F(StorageFaultsTest, PlantedFilesAreRecoveredOrSetAside) {
  const auto ours = [&] {
    CipDatabaseClient client;
    client.initialize(data_);
    client.insertMultiple({{"kept", Items}, {std::string(50'000, 'x'), Items}});
  };
  const auto hotJournal = [&] {
    ours();
    const OtherConnection database(file_);
    EXPECT_TRUE(database.execute(
        "PRAGMA cache_size = 1; BEGIN; UPDATE Items SET json = 'changed' || hex(zeroblob(20000))"));
    for (const char* const suffix : {"", "-journal"}) {
      fs::copy(file_.string() + suffix, data_ / (std::string("copy") + suffix));
    }
    EXPECT_TRUE(database.execute("ROLLBACK"));
    for (const char* const suffix : {"", "-journal"}) {
      fs::rename(data_ / (std::string("copy") + suffix), file_.string() + suffix);
    }
  };
  struct Case {
    const char* name;
    std::function<void()> plant;
    std::size_t rowsKept;
    int setAside;
  };
  const std::vector<Case> cases = {
      {"nothing", [] {}, 0, 0},
      {"our own", ours, 2, 0},
      {"zero length", [&] { test::write(file_, ""); }, 0, 0},
      {"truncated",
       [&] {
         ours();
         fs::resize_file(file_, 30'000);
       },
       0, 1},
      {"no database", [&] { test::write(file_, "<html>"); }, 0, 1},
      {"a journal left behind",
       [&] {
         hotJournal();
         fs::remove(file_);
       },
       0, 0},
      {"a journal to be rolled back", hotJournal, 2, 0},
      {"a database of others", [&] { OtherConnection(file_).execute("CREATE TABLE Others(a); "); },
       0, 1},
      {"a table of the same name",
       [&] {
         OtherConnection(file_).execute(
             "PRAGMA auto_vacuum = 2; CREATE TABLE items(ID INTEGER PRIMARY KEY, text)");
       },
       0, 1},
      {"a view of the same name",
       [&] {
         OtherConnection(file_).execute("CREATE VIEW Environments AS SELECT 1 AS ID, 'x' AS json");
       },
       0, 1},
  };
  for (const auto& [name, plant, rowsKept, setAside] : cases) {
    SCOPED_TRACE(name);
    fs::remove_all(data_);
    fs::create_directory(data_);
    const auto reportsBefore = logged().size();
    plant();
    CipDatabaseClient client;
    client.initialize(data_);
    EXPECT_THAT(client.getAllItems(), SizeIs(rowsKept));
    client.insertMultiple({{"new", Items}, {"new", CipDatabaseClientInterface::Environments}});
    EXPECT_THAT(client.getAllItems(), SizeIs(rowsKept + 1));
    EXPECT_THAT(client.getAll(CipDatabaseClientInterface::Environments).second, SizeIs(1));
    EXPECT_THAT(query(file_, "PRAGMA integrity_check"), ElementsAre("ok"));
    EXPECT_EQ(filesSetAside(), setAside);
    EXPECT_EQ(logged().find("it was set aside as", reportsBefore) != std::string::npos,
              setAside == 1);
  }
}

TEST_F(StorageFaultsTest, APathThatIsTooLongIsNamed) {
  fs::path deep = data_;
  for (int level = 0; level < 4; ++level) {
    deep /= std::string(200, 'd');
  }
  CipDatabaseClient client;
  for (const auto& directory : {deep, data_ / std::string(300, 'd')}) {
    std::error_code ignored;
    fs::create_directories(directory, ignored);
    EXPECT_THAT([&] { client.initialize(directory); },
                testing::ThrowsMessage<qel::exception>(HasSubstr(directory)));
  }
}

}  // namespace
}  // namespace qel::log::analytics
