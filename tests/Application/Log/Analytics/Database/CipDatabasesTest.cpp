#include <gmock/gmock.h>

#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "host/QelAssert/Assert.h"
#include "host/QelUtilities/Debugger.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics {

using test::MemoryStorage;
using namespace testing;

constexpr auto Items = CipDatabaseClientInterface::Items;

void insert(CipDatabases& databases, const std::string& event = "event") {
  databases.insert(std::make_unique<items::CrashReportItem>(event), Items);
}

TEST(CipDatabasesTest, AsksTheHostBeforeEachBatchWhichDatabaseMayBeWritten) {
  MemoryStorage storage;
  storage.parameter.isSendingAllowed = [asked = 0]() mutable { return ++asked > 2; };
  storage.parameter.databaseCallback = [asked = 0]() mutable { return ++asked % 2 == 0; };
  auto& databases = storage.initialized();
  for (const auto* const event : {"1", "2", "3", "4"}) {
    insert(databases, event);
    databases.join();
  }
  EXPECT_THAT(storage.sending->texts(Items), ElementsAre(HasSubstr("\"3\""), HasSubstr("\"4\"")));
  EXPECT_THAT(storage.support->texts(Items), ElementsAre(HasSubstr("\"2\""), HasSubstr("\"4\"")));
  EXPECT_TRUE(databases.getWriteToCipDatabaseFunc());
}

TEST(CipDatabasesTest, JoinWritesAllThatIsQueuedAndGoesOn) {
  const test::AssertionRecorder assertions;
  MemoryStorage storage;
  auto& databases = storage.initialized();
  storage.sending->beforeBatch = [&, batches = 0]() mutable {
    if (++batches == 1) {
      insert(databases, "meanwhile");
      assert::Assert::addAssert({"reported to the host's thread", "f", "file", 1});
    }
  };
  databases.insert(nullptr, Items);
  insert(databases, "a");
  databases.join();
  EXPECT_THAT(storage.support->texts(Items), SizeIs(2));
  EXPECT_THAT(storage.recorded(),
              ElementsAre("Application|Crash Report|a|", "Application|Crash Report|meanwhile|"));
  EXPECT_FALSE(databases.errorOccurred());
  EXPECT_THAT(assertions.lines(), ElementsAre("f (file:1): reported to the host's thread"));
}

TEST(CipDatabasesTest, DiscardsAtItsEndTheItemsThatAreStillQueued) {
  test::Tally batches;
  {
    AccumulatingDispatcher dispatcher([&](const auto&) { batches.add(); }, std::chrono::hours(1),
                                      2);
    dispatcher.start();
    dispatcher.add(std::make_unique<items::CrashReportItem>("lost"), Items);
  }
  EXPECT_EQ(batches.count(), 0);
}

#ifndef _WIN32
/// No thread can be created while its stack would be larger than the address space.
TEST(CipDatabasesTest, StoresTheItemsThatWereQueuedWhileNoThreadCouldBeCreated) {
  test::Tally batches;
  AccumulatingDispatcher dispatcher([&](const auto&) { batches.add(); }, std::chrono::hours(1), 2);
  dispatcher.start();
  pthread_attr_t normal;
  pthread_getattr_default_np(&normal);
  pthread_attr_t tooLarge = normal;
  pthread_attr_setstacksize(&tooLarge, std::size_t{1} << 60);
  pthread_setattr_default_np(&tooLarge);
  EXPECT_THROW(dispatcher.join(), std::system_error);
  pthread_setattr_default_np(&normal);
  dispatcher.add(std::make_unique<items::CrashReportItem>("late"), Items);
  dispatcher.join();
  EXPECT_EQ(batches.count(), 1);
}
#endif

TEST(CipDatabasesTest, FailsForGoodWhenABatchCannotBeWritten) {
  const std::function<void(MemoryStorage&)> faults[] = {
      [](auto&) {},  // Without initialization nobody can be asked for permission.
      [](auto& storage) {
        storage.initialized();
        storage.support->beforeBatch = [] { throw 1; };
      }};
  test::Tally breaks;
  utilities::debugger::Debugger::setHook([&] { breaks.add(); });
  for (const auto& prepare : faults) {
    MemoryStorage storage;
    prepare(storage);
    for (int times = 0; times < 2; ++times) {
      insert(*storage.databases);
      storage.databases->join();
      EXPECT_TRUE(storage.databases->errorOccurred());
    }
    EXPECT_THAT(storage.sending->texts(Items), IsEmpty());
  }
  EXPECT_EQ(breaks.count(), 2) << "one for each fault";
  utilities::debugger::Debugger::setHook({});
}

}  // namespace qel::log::analytics
