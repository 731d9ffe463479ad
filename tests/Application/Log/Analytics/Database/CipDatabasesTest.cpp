#include <future>
#include <thread>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "host/QelUtilities/Debugger.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics {
namespace {

using test::MemoryStorage;
using test::Tally;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using utilities::debugger::Debugger;

constexpr auto Items = CipDatabaseClientInterface::Items;

void insert(CipDatabases& databases, const std::string& event = "event") {
  databases.insert(std::make_unique<items::CrashReportItem>(event), Items);
}

/// Renders what the test says.
class Rendered : public json::ToJsonInterface {
 public:
  explicit Rendered(std::function<std::string()> render) : render_(std::move(render)) {}
  std::string toJson() const override { return render_(); }

 private:
  const std::function<std::string()> render_;
};

TEST(CipDatabasesTest, RendersAnItemOnceForBothDatabases) {
  MemoryStorage storage;
  Tally renderings;
  storage.initialized().insert(std::make_unique<Rendered>([&] {
                                 renderings.add();
                                 return "text";
                               }),
                               Items);
  storage.databases->join();
  EXPECT_EQ(renderings.count(), 1);
  EXPECT_THAT(storage.sending->texts(Items), ElementsAre("text"));
  EXPECT_THAT(storage.support->texts(Items), ElementsAre("text"));
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

TEST(CipDatabasesTest, WritesEverySecondAndToTheSupportDatabaseFirst) {
  MemoryStorage storage;
  auto& databases = storage.initialized();
  std::vector<std::string> inSupportBefore;
  Tally batches;
  storage.sending->beforeBatch = [&] {
    inSupportBefore = storage.support->texts(Items);
    batches.add();
  };
  const auto start = std::chrono::steady_clock::now();
  insert(databases);
  insert(databases);
  EXPECT_TRUE(batches.reaches(1));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  databases.join();
  EXPECT_THAT(inSupportBefore, SizeIs(2));
  EXPECT_THAT(storage.sending->calls(), ElementsAre("initialize directory", "batch 2"));
  EXPECT_EQ(&databases.getCipDatabase(), storage.sending);
}

TEST(CipDatabasesTest, FailsForGoodWhenABatchCannotBeWritten) {
  const std::pair<const char*, std::function<void(MemoryStorage&)>> cases[] = {
      {"no permissions yet", [](auto&) {}},
      {"empty support permission",
       [](auto& storage) {
         storage.parameter.databaseCallback = {};
         storage.initialized();
       }},
      {"rendering throws",
       [](auto& storage) {
         storage.initialized().insert(
             std::make_unique<Rendered>([]() -> std::string { throw std::bad_alloc(); }), Items);
       }},
      {"database throws", [](auto& storage) {
         storage.initialized();
         storage.support->beforeBatch = [] { throw 1; };
       }}};
  Tally breaks;
  Debugger::setHook([&] { breaks.add(); });
  for (const auto& [what, prepare] : cases) {
    SCOPED_TRACE(what);
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

TEST(CipDatabasesTest, HoldsTenThousandItemsAndNoMoreWhileTheHostsJoinIsStalled) {
  MemoryStorage storage;
  auto& databases = storage.initialized();
  Tally written;
  std::promise<void> release;
  storage.support->beforeBatch = [&] {
    written.add();
    if (written.count() == 1) {
      release.get_future().wait();
    }
  };
  insert(databases, "first");
  std::thread joining([&] { databases.join(); });
  ASSERT_TRUE(written.reaches(1));
  for (int i = 0; i < 10'000; ++i) {
    insert(databases, "lost");
  }
  EXPECT_FALSE(databases.errorOccurred());
  insert(databases, "too much");
  EXPECT_TRUE(databases.errorOccurred());
  insert(databases, "after the end");
  release.set_value();
  joining.join();
  EXPECT_THAT(storage.recorded(),
              ElementsAre("CIP|InsertingItems|CriticalLarge|Message=Dispatcher has reached "
                          "critical level of added data",
                          "Application|Crash Report|first|"));
}

}  // namespace
}  // namespace qel::log::analytics
