#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "host/QelAssert/Assert.h"
#include "host/QelUtilities/Debugger.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics {
namespace {

using test::MemoryStorage;
using test::Tally;
using namespace testing;
using utilities::debugger::Debugger;

constexpr auto Items = CipDatabaseClientInterface::Items;

void insert(CipDatabases& databases, const std::string& event = "event") {
  databases.insert(std::make_unique<items::CrashReportItem>(event), Items);
}

TEST(CipDatabasesTest, WritesToTheDatabasesThatTheHostAllows) {
  for (const auto& [toSending, toSupport] :
       {std::pair{false, false}, {false, true}, {true, false}, {true, true}}) {
    MemoryStorage storage;
    storage.parameter.isSendingAllowed = [allowed = toSending] { return allowed; };
    storage.parameter.databaseCallback = [allowed = toSupport] { return allowed; };
    auto& databases = storage.initialized();
    EXPECT_EQ(databases.getWriteToCipDatabaseFunc(), toSending);
    insert(databases);
    databases.join();
    EXPECT_THAT(storage.sending->texts(Items), SizeIs(toSending ? 1 : 0));
    EXPECT_THAT(storage.support->texts(Items), SizeIs(toSupport ? 1 : 0));
    EXPECT_FALSE(databases.errorOccurred());
  }
}

TEST(CipDatabasesTest, AsksTheHostOnOneObjectThatKeepsItsState) {
  MemoryStorage storage;
  storage.parameter.databaseCallback = [asked = 0]() mutable { return ++asked == 2; };
  auto& databases = storage.initialized();
  for (const auto* const event : {"first", "second", "third"}) {
    insert(databases, event);
    databases.join();
  }
  EXPECT_THAT(storage.recorded(), ElementsAre("Application|Crash Report|second|"));
}

TEST(CipDatabasesTest, JoinWritesAllThatIsQueuedAndGoesOn) {
  MemoryStorage storage;
  auto& databases = storage.initialized();
  storage.sending->beforeBatch = [&] {
    storage.sending->beforeBatch = {};
    insert(databases, "meanwhile");
  };
  databases.insert(nullptr, Items);
  insert(databases, "a");
  insert(databases, "b");
  databases.join();
  insert(databases, "c");
  EXPECT_THAT(storage.recorded(),
              ElementsAre("Application|Crash Report|a|", "Application|Crash Report|b|",
                          "Application|Crash Report|meanwhile|", "Application|Crash Report|c|"));
  EXPECT_FALSE(databases.errorOccurred());
}

TEST(CipDatabasesTest, DiscardsAtItsEndWhatIsStillQueued) {
  test::Tally batches;
  {
    AccumulatingDispatcher dispatcher([&](const auto&) { batches.add(); }, std::chrono::hours(1),
                                      2);
    dispatcher.start();
    dispatcher.add(std::make_unique<items::CrashReportItem>("lost"), Items);
  }
  EXPECT_EQ(batches.count(), 0);
}

TEST(CipDatabasesTest, ReportsAssertionsOfItsThreadTheWayTheHostsThreadDoes) {
  const test::AssertionRecorder assertions;
  MemoryStorage storage;
  storage.support->beforeBatch = [] {
    assert::Assert::addAssert({"from the worker", "f", "file", 1});
  };
  insert(storage.initialized());
  storage.databases->join();
  EXPECT_THAT(assertions.lines(), ElementsAre("f (file:1): from the worker"));
}

TEST(CipDatabasesTest, FailsForGoodWhenABatchCannotBeWritten) {
  const std::function<void(MemoryStorage&)> faults[] = {
      [](auto&) {},  // It has not been told yet who may be asked for permission.
      [](auto& storage) {
        storage.parameter.databaseCallback = {};
        storage.initialized();
      },
      [](auto& storage) {
        storage.initialized();
        storage.support->beforeBatch = [] { throw 1; };
      }};
  Tally breaks;
  Debugger::setHook([&] { breaks.add(); });
  for (const auto& prepare : faults) {
    MemoryStorage storage;
    prepare(storage);
    const int breaksBefore = breaks.count();
    for (int i = 0; i < 2; ++i) {
      insert(*storage.databases);
      storage.databases->join();
      EXPECT_TRUE(storage.databases->errorOccurred());
      storage.support->beforeBatch = {};
    }
    EXPECT_EQ(breaks.count(), breaksBefore + 1);
    EXPECT_THAT(storage.sending->texts(Items), IsEmpty());
    EXPECT_THAT(storage.support->texts(Items), IsEmpty());
  }
  Debugger::setHook({});
}

}  // namespace
}  // namespace qel::log::analytics
