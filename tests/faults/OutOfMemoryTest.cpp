#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <mutex>

#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"
#include "host/QelBroadcaster/ProjectBroadcaster.h"
#include "host/QelBroadcaster/SaveBroadcaster.h"
#include "tests/faults/Session.h"
#include "tests/faults/ShortMemory.h"
#include "tests/support/AssertionRecorder.h"

namespace qel::test {
namespace {

using namespace std::chrono_literals;
using namespace broadcaster;
using namespace log::analytics;

class OutOfMemoryTest : public testing::Test {
 protected:
  OutOfMemoryTest() {
    keepTemporaryDirectoriesInMemory();
    testing::internal::CaptureStderr();
  }
  ~OutOfMemoryTest() override { testing::internal::GetCapturedStderr(); }

  /// What was logged since the last call.
  static std::string logged() {
    auto text = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    return text;
  }
};

class Speaking : public event::GeneralEventInterface {
  std::string getCategory() const override { return "Category"; }
  std::string getSubCategory() const override { return {}; }
  std::string getEvent() const override { return "Event"; }
  std::map<std::string, std::string> getDetails() const override { return {}; }
};

template <typename Broadcaster, typename Operation, typename Event>
std::function<void()> notifying(Operation operation, Event event) {
  return [=] { Broadcaster::getInstance().notify(operation, event); };
}

TEST_F(OutOfMemoryTest, AnEventIsRecordedOrThrowsAndTheNextOneIsRecorded) {
  MemoryStorage storage;
  storage.parameter.isSendingAllowed = [] { return false; };
  Client client(std::move(storage.owned));
  client.activate(storage.parameter);
  const std::string text(100, 'x');
  const std::function<void()> events[] = {
      notifying<ActionBroadcaster>(&ActionListenerInterface::onGraphicAction,
                                   event::GraphicActionEvent{{text, {{text, text}}}}),
      notifying<ApplicationBroadcaster>(&ApplicationListenerInterface::onApplicationStarted,
                                        event::ApplicationStartEvent{{text}}),
      notifying<ApplicationBroadcaster>(&ApplicationListenerInterface::onApplicationCrashed,
                                        event::ApplicationCrashEvent{{text}, 1}),
      notifying<ProjectBroadcaster>(
          &ProjectListenerInterface::onProjectRestored,
          event::ProjectRestoreDialogEvent{text, text, text, RestoreAnswer::No}),
      notifying<SaveBroadcaster>(&SaveListenerInterface::onAutoSave,
                                 event::AutoSaveEvent{SaveKind::Project, text, true}),
      notifying<GeneralBroadcaster>(&GeneralListenerInterface::onGeneralAction,
                                    std::make_shared<const Speaking>())};
  const auto afterwards = notifying<ActionBroadcaster>(&ActionListenerInterface::onHelpAction,
                                                       event::HelpActionEvent{{"afterwards", {}}});
  for (const auto& event : events) {
    const int failures = sweepAllocations([&] {
      const auto before = storage.recorded().size();
      const bool threw = runShortDuring(event);
      const auto recorded = storage.recorded().size();
      EXPECT_TRUE(threw || recorded > before);
      afterwards();
      EXPECT_EQ(storage.recorded().size(), recorded + 1);
    });
    EXPECT_GE(failures, 4);
  }
}

TEST_F(OutOfMemoryTest, QueueingAllocatesNothingAndAFullQueueFailsAllTheSame) {
  const auto item = [] { return std::make_unique<Numbered>(1); };
  const auto Items = CipDatabaseClientInterface::Items;
  const auto fillWith = [&](int items) {
    return sweepAllocations([&] {
      std::atomic<int> batches = 0;
      AccumulatingDispatcher dispatcher([&](const auto&) { ++batches; }, 1000h, 1);
      dispatcher.start();
      for (int i = 0; i < items; ++i) {
        auto next = item();
        runShortDuring([&] { dispatcher.add(std::move(next), Items); });
      }
      EXPECT_EQ(dispatcher.hasFailed(), items > 1);
      dispatcher.join();
      dispatcher.add(item(), Items);
      dispatcher.join();
      EXPECT_EQ(batches, items == 1 ? 2 : hasRunShort() ? 0 : 1);
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
    const auto insert = [&](std::unique_ptr<json::ToJsonInterface> item) {
      databases.insert(std::move(item), CipDatabaseClientInterface::Items);
    };
    const int number = 2 * static_cast<int>(isLossNoticed.size());
    insert(std::make_unique<ShorteningItem>());
    insert(std::make_unique<Numbered>(number));
    insert(std::make_unique<items::CrashReportItem>("crash"));
    insert(std::make_unique<Numbered>(number + 1));
    databases.join();
    if (databases.errorOccurred()) {
      insert(std::make_unique<Numbered>(-1));
      databases.join();
    }
    isLossNoticed.push_back(databases.errorOccurred() || !assertions.lines().empty() ||
                            !logged().empty());
  });
  EXPECT_GT(failures, 50);
  for (const auto* file : {"SupportDatabase.db", "ItemDatabase.db"}) {
    const auto stored = numbersIn(directory.path() / file);
    EXPECT_FALSE(std::ranges::binary_search(stored, -1));
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
    database->insertMultiple({std::to_string(rows++)}, database->Items);
    Client client(std::make_unique<CipDatabases>(std::move(database),
                                                 std::make_unique<MemoryDatabaseClient>()));
    client.activate(memory.parameter);
    client.startSendingItems();  // another pass, on a thread with memory enough
  });
  EXPECT_GT(failures, 50);
  EXPECT_THAT(site.waiting(), testing::IsEmpty());
  auto accepted = site.acceptedOrWaiting();
  accepted.erase(std::ranges::unique(accepted).begin(), accepted.end());
  EXPECT_TRUE(accepted == numbersUpTo(rows));
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
