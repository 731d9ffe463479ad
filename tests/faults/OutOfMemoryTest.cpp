#include <algorithm>
#include <chrono>
#include <fstream>
#include <mutex>

#include "tests/faults/ShortMemory.h"
#include "tests/faults/Site.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Logged.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::test {
namespace {

using namespace log::analytics;

constexpr auto Items = CipDatabaseClientInterface::Items;

class OutOfMemoryTest : public testing::Test {
 protected:
  OutOfMemoryTest() {
    keepTemporaryDirectoriesInMemory();
    testing::internal::CaptureStderr();
    // Its thread, which comes with the first message, is there before memory runs short.
    log::LogManager::instance().getLogger("test")->log(log::Level::Warning, "begun");
    logged();
  }
  ~OutOfMemoryTest() override { endCaptureOfErrors(); }

  /// What was logged since the last call.
  static std::string logged() {
    auto text = endCaptureOfErrors();
    testing::internal::CaptureStderr();
    return text;
  }
};

TEST_F(OutOfMemoryTest, AnEventIsRecordedOrThrowsAndTheNextOneIsRecorded) {
  MemoryStorage storage;
  storage.parameter.isSendingAllowed = [] { return false; };
  Client client(std::move(storage.owned));
  client.activate(storage.parameter);
  const auto recorded = [&] {
    storage.databases->join();
    return storage.support->texts(Items).size();
  };
  std::ifstream script(QEL_SOURCE_DIR "/samples/session.jsonl");
  int events = 0;
  for (const auto& step : samplehost::readSessionScript(script, "script")) {
    const auto* const event = std::get_if<samplehost::Broadcast>(&step.action);
    if (event == nullptr) {
      continue;
    }
    const auto atFirst = recorded();
    (*event)();
    if (recorded() == atFirst) {
      continue;  // Only a host that registers a store of issues is told of what happens there.
    }
    ++events;
    const int failures = sweepAllocations([&] {
      const auto before = recorded();
      const bool threw = runShortDuring(*event);
      const auto between = recorded();
      EXPECT_TRUE(threw || between > before) << "line " << step.line;
      (*event)();
      EXPECT_GT(recorded(), between) << "line " << step.line;
    });
    EXPECT_GE(failures, 4);
  }
  EXPECT_GT(events, 20);
}

TEST_F(OutOfMemoryTest, QueueingAllocatesNothingAndAFullQueueFailsAllTheSame) {
  const auto fillWith = [](int items) {
    return sweepAllocations([&] {
      int batches = 0;
      AccumulatingDispatcher dispatcher([&](const auto&) { ++batches; }, std::chrono::hours(1), 1);
      dispatcher.start();
      for (int i = 0; i < items; ++i) {
        auto item = std::make_unique<Numbered>(i);
        runShortDuring([&] { dispatcher.add(std::move(item), Items); });
      }
      EXPECT_EQ(dispatcher.hasFailed(), items > 1);
      dispatcher.join();
      const bool isMarkerLost = items > 1 && hasRunShort();
      EXPECT_EQ(batches, isMarkerLost ? 0 : 1);
    });
  };
  EXPECT_EQ(fillWith(1), 0);
  EXPECT_GT(fillWith(2), 0);
}

/// The first of a batch, from which on the worker's memory is short.
class ShorteningItem : public json::ToJsonInterface {
  std::string toJson() const override {
    runShort();
    return {};
  }
};

TEST_F(OutOfMemoryTest, ABatchIsStoredWholeOrNotAtAllAndItsLossIsNoticed) {
  const TemporaryDirectory directory;
  MemoryStorage memory;
  memory.parameter.databasePath = directory.text();
  std::vector<bool> isLossNoticed;
  const int failures = sweepAllocations([&] {
    const AssertionRecorder assertions;
    CipDatabases databases(std::make_unique<CipDatabaseClient>(),
                           std::make_unique<SupportDatabaseClient>(std::nullopt));
    databases.initialize(memory.parameter);
    const int number = 2 * static_cast<int>(isLossNoticed.size());
    databases.insert(std::make_unique<ShorteningItem>(), Items);
    databases.insert(std::make_unique<Numbered>(number), Items);
    databases.insert(std::make_unique<Numbered>(number + 1), Items);
    databases.join();
    isLossNoticed.push_back(databases.errorOccurred() || !assertions.lines().empty() ||
                            !logged().empty());
  });
  EXPECT_GT(failures, 50);
  for (const auto* file : {"SupportDatabase.db", "ItemDatabase.db"}) {
    const auto stored = numbersIn(directory.path() / file);
    for (std::size_t i = 0; i < isLossNoticed.size(); ++i) {
      const int number = 2 * static_cast<int>(i);
      const bool isStored = std::ranges::binary_search(stored, number);
      EXPECT_EQ(std::ranges::binary_search(stored, number + 1), isStored) << file << ' ' << i;
      EXPECT_TRUE(isStored || isLossNoticed[i]) << file << ' ' << i;
    }
  }
}

/// A sending database whose first reader's memory is short from then on.
class Shortening : public CipDatabaseClient {
 public:
  std::pair<Table, RowMap> getAll(Table table) override {
    std::call_once(once_, runShort);
    return CipDatabaseClient::getAll(table);
  }

 private:
  std::once_flag once_;
};

TEST_F(OutOfMemoryTest, WhatAFailedPassHasLeftALaterOneSends) {
  const Site site;
  MemoryStorage memory;
  memory.parameter.databasePath = site.directory();
  int rows = 0;
  const int failures = sweepAllocations([&] {
    auto database = std::make_unique<Shortening>();
    database->initialize(site.directory());
    database->insertMultiple({std::to_string(rows++)}, Items);
    Client client(std::make_unique<CipDatabases>(std::move(database),
                                                 std::make_unique<MemoryDatabaseClient>()));
    client.activate(memory.parameter);
    client.startSendingItems();  // another pass, on a thread with memory enough
  });
  EXPECT_GT(failures, 50);
  EXPECT_THAT(site.waiting(), testing::IsEmpty());
  auto accepted = site.acceptedOrWaiting();
  accepted.erase(std::unique(accepted.begin(), accepted.end()), accepted.end());
  EXPECT_TRUE(accepted == numbersBelow(rows));
}

TEST_F(OutOfMemoryTest, AFileOfAnotherShapeIsUsedWhenThereIsMemoryAgain) {
  const TemporaryDirectory directory;
  int files = 0;
  const int failures = sweepAllocations([&] {
    const auto file = directory.path() / (std::to_string(files++) + ".db");
    db::sql::SqlDatabaseAdapter(file).execute(
        "CREATE TABLE \"Items\" (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT, more TEXT)");
    db::sql::SqlDatabaseAdapter database(file);
    runShortDuring([&] {
      database.execute(
          "CREATE TABLE IF NOT EXISTS Items (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT)");
    });
    EXPECT_TRUE(database.execute("INSERT INTO Items(json) VALUES ('x')").boSuccess());
    EXPECT_EQ(database.selectAll("Items").result().size(), 1U);
  });
  EXPECT_GT(failures, 20);
}

TEST_F(OutOfMemoryTest, ReplacingACorruptFileFailsWithoutEndingTheProcess) {
  const TemporaryDirectory directory;
  int files = 0;
  const int failures = sweepAllocations([&] {
    const auto file = directory.path() / (std::to_string(files++) + ".db");
    db::sql::SqlDatabaseAdapter database(file);
    database.execute("CREATE TABLE Items (json TEXT)");
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(24) << "changed!";  // the counter that tells SQLite to read anew
    stream.seekp(4096) << std::string(4096, '\xff');
    stream.close();
    runShortDuring([&] {
      const auto transaction = database.beginTransaction();
      database.execute("INSERT INTO Items VALUES ('x')");
    });
    const auto stored = database.execute("SELECT * FROM Items");
    EXPECT_TRUE(!stored.boSuccess() || stored.result().empty());
  });
  EXPECT_GT(failures, 20);
}

}  // namespace
}  // namespace qel::test
