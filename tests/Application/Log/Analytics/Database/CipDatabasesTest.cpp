#include <future>
#include <thread>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "host/QelUtilities/Debugger.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace {

using qel::log::analytics::CipDatabaseClientInterface;
using qel::log::analytics::CipDatabases;
using qel::test::MemoryStorage;
using qel::test::Tally;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto Items = CipDatabaseClientInterface::Items;

class Text : public qel::json::ToJsonInterface {
 public:
  explicit Text(std::function<std::string()> render) : render_(std::move(render)) {}
  std::string toJson() const override { return render_(); }

 private:
  const std::function<std::string()> render_;
};

void insert(CipDatabases& databases, std::function<std::string()> render) {
  databases.insert(std::make_unique<Text>(std::move(render)), Items);
}

TEST(CipDatabasesTest, WritesToTheDatabasesThatTheHostAllows) {
  for (const bool toSending : {false, true}) {
    for (const bool toSupport : {false, true}) {
      MemoryStorage storage;
      storage.parameter.isSendingAllowed = [toSending] { return toSending; };
      storage.parameter.databaseCallback = [toSupport] { return toSupport; };
      auto& databases = storage.initialized();
      EXPECT_EQ(databases.getWriteToCipDatabaseFunc(), toSending);
      Tally renderings;
      insert(databases, [&] {
        renderings.add();
        return std::string("row");
      });
      databases.join();
      EXPECT_THAT(storage.sending->texts(Items), SizeIs(toSending ? 1 : 0));
      EXPECT_THAT(storage.support->texts(Items), SizeIs(toSupport ? 1 : 0));
      EXPECT_EQ(renderings.count(), 1);
      EXPECT_FALSE(databases.errorOccurred());
    }
  }
}

TEST(CipDatabasesTest, InitializesTheSendingDatabaseFirstAndWritesToTheSupportDatabaseFirst) {
  MemoryStorage storage;
  auto& databases = storage.initialized();
  std::size_t inSupportBefore = 0;
  storage.sending->beforeBatch = [&](const auto&) {
    inSupportBefore = storage.support->texts(Items).size();
  };
  insert(databases, [] { return "a"; });
  insert(databases, [] { return "b"; });
  databases.join();
  EXPECT_EQ(inSupportBefore, 2U);
  EXPECT_THAT(storage.sending->calls(), ElementsAre("initialize directory", "batch 2"));
  EXPECT_EQ(&databases.getCipDatabase(), storage.sending);
}

TEST(CipDatabasesTest, FailsForGoodWhenABatchCannotBeWritten) {
  Tally breaks;
  qel::utilities::debugger::Debugger::setHook([&] { breaks.add(); });
  const struct {
    const char* what;
    std::function<void(MemoryStorage&)> prepare;
    std::function<std::string()> render;
  } cases[] = {
      {"no permissions yet", [](MemoryStorage&) {}, [] { return "row"; }},
      {"empty support permission",
       [](MemoryStorage& storage) {
         storage.parameter.databaseCallback = {};
         storage.initialized();
       },
       [] { return "row"; }},
      {"database throws",
       [](MemoryStorage& storage) {
         storage.initialized();
         storage.support->beforeBatch = [](const auto&) { throw std::runtime_error("disk"); };
       },
       [] { return "row"; }},
      {"rendering throws", [](MemoryStorage& storage) { storage.initialized(); },
       []() -> std::string { throw std::bad_alloc(); }},
  };
  int expectedBreaks = 0;
  for (const auto& [what, prepare, render] : cases) {
    MemoryStorage storage;
    prepare(storage);
    insert(*storage.databases, render);
    storage.databases->join();
    EXPECT_TRUE(storage.databases->errorOccurred()) << what;
    EXPECT_EQ(breaks.count(), ++expectedBreaks) << what;
    insert(*storage.databases, [] { return "later"; });
    storage.databases->join();
    EXPECT_THAT(storage.sending->texts(Items), IsEmpty()) << what;
    EXPECT_THAT(storage.support->texts(Items), IsEmpty()) << what;
  }
  qel::utilities::debugger::Debugger::setHook({});
}

TEST(CipDatabasesTest, HoldsTenThousandItemsAndNoMoreEvenWhileTheHostJoins) {
  MemoryStorage storage;
  auto& databases = storage.initialized();
  Tally stalled;
  std::promise<void> release;
  insert(databases, [&] {
    stalled.add();
    release.get_future().wait();
    return std::string("first");
  });
  std::thread joining([&] { databases.join(); });
  ASSERT_TRUE(stalled.reaches(1));
  for (int i = 0; i < 10'000; ++i) {
    insert(databases, [] { return "lost"; });
  }
  EXPECT_FALSE(databases.errorOccurred());
  insert(databases, [] { return "too much"; });
  EXPECT_TRUE(databases.errorOccurred());
  release.set_value();
  joining.join();
  EXPECT_THAT(storage.sending->texts(Items),
              ElementsAre(testing::HasSubstr("CriticalLarge"), "first"));
}

TEST(CipDatabasesTest, HasNobodyToAskBeforeItIsInitialized) {
  MemoryStorage storage;
  EXPECT_THROW(storage.databases->getWriteToCipDatabaseFunc(), std::bad_function_call);
}

}  // namespace
