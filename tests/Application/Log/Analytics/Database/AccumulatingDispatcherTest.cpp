#include <future>
#include <thread>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/AccumulatingDispatcher.h"
#include "host/QelAssert/Assert.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/StoredEvent.h"
#include "tests/support/Tally.h"

namespace {

using namespace std::chrono_literals;
using qel::log::analytics::AccumulatingDispatcher;
using qel::log::analytics::CipDatabaseClientInterface;
using qel::test::Tally;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto Items = CipDatabaseClientInterface::Items;
constexpr auto never = 1000h;

class Text : public qel::json::ToJsonInterface {
 public:
  explicit Text(std::string text) : text_(std::move(text)) {}
  std::string toJson() const override { return text_; }

 private:
  const std::string text_;
};

/// A dispatcher that collects its batches, each as the list of its texts.
class DispatcherTest : public testing::Test {
 protected:
  using Batch = std::vector<std::string>;

  AccumulatingDispatcher::Callback collect() {
    return [this](const std::vector<AccumulatingDispatcher::Entry>& entries) {
      Batch batch;
      for (const auto& [item, table] : entries) {
        batch.push_back(item->toJson());
      }
      if (onBatch) {
        onBatch();
      }
      const std::lock_guard lock(mutex_);
      batches_.push_back(batch);
    };
  }
  static void add(AccumulatingDispatcher& dispatcher, const std::string& text) {
    dispatcher.add(std::make_unique<Text>(text), Items);
  }
  std::vector<Batch> batches() {
    const std::lock_guard lock(mutex_);
    return batches_;
  }

  std::function<void()> onBatch;

 private:
  std::mutex mutex_;
  std::vector<Batch> batches_;  ///< guarded by mutex_
};

TEST_F(DispatcherTest, JoinHandsOverEverythingAndGoesOn) {
  AccumulatingDispatcher dispatcher(collect(), never, 10);
  dispatcher.start();
  add(dispatcher, "a");
  dispatcher.add(nullptr, Items);
  add(dispatcher, "b");
  dispatcher.join();
  EXPECT_THAT(batches(), ElementsAre(ElementsAre("a", "b")));
  add(dispatcher, "c");
  dispatcher.join();
  EXPECT_THAT(batches(), ElementsAre(ElementsAre("a", "b"), ElementsAre("c")));
  dispatcher.join();
  EXPECT_FALSE(dispatcher.hasFailed());
  EXPECT_EQ(batches().size(), 2U);
}

TEST_F(DispatcherTest, WritesEveryPeriodWhatArrivedMeanwhileToo) {
  Tally written;
  AccumulatingDispatcher* running = nullptr;
  onBatch = [&] {
    if (written.count() == 0) {
      add(*running, "during");
    }
    written.add();
  };
  AccumulatingDispatcher dispatcher(collect(), 1ms, 10);
  running = &dispatcher;
  dispatcher.start();
  add(dispatcher, "before");
  EXPECT_TRUE(written.reaches(2));
}

TEST_F(DispatcherTest, DiscardsWhatIsQueuedAtDestruction) {
  {
    AccumulatingDispatcher dispatcher(collect(), never, 10);
    dispatcher.start();
    add(dispatcher, "a");
  }
  EXPECT_THAT(batches(), IsEmpty());
}

TEST_F(DispatcherTest, FailsForGoodWhenTheQueueIsFull) {
  AccumulatingDispatcher dispatcher(collect(), never, 3);
  dispatcher.start();
  for (const auto* text : {"a", "b", "c"}) {
    add(dispatcher, text);
  }
  EXPECT_FALSE(dispatcher.hasFailed());
  add(dispatcher, "d");
  EXPECT_TRUE(dispatcher.hasFailed());
  add(dispatcher, "e");
  dispatcher.join();
  ASSERT_EQ(batches().size(), 1U);
  EXPECT_THAT(
      qel::test::summariesOf(batches()[0]),
      ElementsAre("CIP|InsertingItems|CriticalLarge|Message=Dispatcher has reached critical "
                  "level of added data"));
}

TEST_F(DispatcherTest, OverflowBesideAStalledWorkerNeitherBlocksNorDeliversMore) {
  std::promise<void> release;
  Tally stalled;
  std::atomic<bool> first{true};
  onBatch = [&] {
    if (first.exchange(false)) {
      stalled.add();
      release.get_future().wait();
    }
  };
  AccumulatingDispatcher dispatcher(collect(), 1ms, 2);
  dispatcher.start();
  add(dispatcher, "being written");
  ASSERT_TRUE(stalled.reaches(1));
  for (const auto* text : {"a", "b", "c", "d"}) {
    add(dispatcher, text);
  }
  EXPECT_TRUE(dispatcher.hasFailed());
  EXPECT_EQ(batches().size(), 1U);  // the marker, from this thread
  release.set_value();
  dispatcher.join();
  EXPECT_EQ(batches().size(), 2U);
  EXPECT_THAT(batches()[1], ElementsAre("being written"));
}

TEST_F(DispatcherTest, FailsForGoodWhenTheCallbackThrows) {
  const struct {
    AccumulatingDispatcher::Callback callback;
  } cases[] = {{[](const auto&) { throw std::runtime_error("no"); }},
               {[](const auto&) { throw 1; }},
               {AccumulatingDispatcher::Callback()}};
  for (const auto& [callback] : cases) {
    AccumulatingDispatcher dispatcher(callback, never, 2);
    dispatcher.start();
    add(dispatcher, "a");
    dispatcher.join();
    EXPECT_TRUE(dispatcher.hasFailed());
    for (const auto* text : {"b", "c", "d"}) {
      add(dispatcher, text);  // no overflow, hence no call either
    }
  }
}

TEST_F(DispatcherTest, ReportsAssertionsTheWayTheStartingThreadDoes) {
  qel::test::AssertionRecorder assertions;
  onBatch = [] { qel::assert::Assert::addAssert({"from the worker", "f", "file", 1}); };
  AccumulatingDispatcher dispatcher(collect(), never, 2);
  dispatcher.start();
  add(dispatcher, "a");
  dispatcher.join();
  EXPECT_THAT(assertions.lines(), ElementsAre("f (file:1): from the worker"));
}

TEST_F(DispatcherTest, LosesAndDoublesNothingFromManyThreads) {
  constexpr int threads = 4;
  constexpr int itemsEach = 2000;
  AccumulatingDispatcher dispatcher(collect(), 100us, threads * itemsEach);
  dispatcher.start();
  std::vector<std::thread> adders;
  for (int t = 0; t < threads; ++t) {
    adders.emplace_back([&dispatcher, t] {
      for (int i = 0; i < itemsEach; ++i) {
        add(dispatcher, std::to_string(t) + ":" + std::to_string(i));
      }
    });
  }
  for (auto& adder : adders) {
    adder.join();
  }
  dispatcher.join();
  std::vector<int> nextOf(threads, 0);
  for (const auto& batch : batches()) {
    for (const auto& text : batch) {
      const auto colon = text.find(':');
      int& next = nextOf.at(std::stoul(text.substr(0, colon)));
      EXPECT_EQ(text.substr(colon + 1), std::to_string(next));
      ++next;
    }
  }
  EXPECT_THAT(nextOf, testing::Each(itemsEach));
}

}  // namespace
