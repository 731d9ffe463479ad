#include <future>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/AccumulatingDispatcher.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "host/QelAssert/Assert.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto never = 1000h;

void add(AccumulatingDispatcher& dispatcher, const std::vector<std::string>& events) {
  for (const auto& event : events) {
    dispatcher.add(std::make_unique<items::CrashReportItem>(event),
                   CipDatabaseClientInterface::Items);
  }
}

/// A dispatcher that collects its batches, each as a list of events.
class DispatcherTest : public testing::Test {
 protected:
  using Batch = std::vector<std::string>;

  AccumulatingDispatcher& start(std::chrono::duration<double> period, unsigned int capacity) {
    dispatcher_.emplace([this](const auto& entries) { collect(entries); }, period, capacity);
    dispatcher_->start();
    return *dispatcher_;
  }
  std::vector<Batch> batches() {
    const std::lock_guard lock(mutex_);
    return batches_;
  }

  std::function<void()> onBatch_ = [] {};
  std::optional<AccumulatingDispatcher> dispatcher_;

 private:
  void collect(const std::vector<AccumulatingDispatcher::Entry>& entries) {
    Batch batch;
    for (const auto& [item, table] : entries) {
      batch.push_back(dynamic_cast<const items::EventInterface&>(*item).getEvent());
    }
    {
      const std::lock_guard lock(mutex_);
      batches_.push_back(batch);
    }
    onBatch_();
  }

  std::mutex mutex_;
  std::vector<Batch> batches_;  ///< guarded by mutex_
};

TEST_F(DispatcherTest, JoinHandsOverEverythingAndGoesOn) {
  auto& dispatcher = start(never, 10);
  onBatch_ = [&] {
    if (batches().size() == 1) {
      add(dispatcher, {"meanwhile"});
    }
  };
  dispatcher.add(nullptr, CipDatabaseClientInterface::Items);
  add(dispatcher, {"a", "b"});
  dispatcher.join();
  add(dispatcher, {"c"});
  dispatcher.join();
  dispatcher.join();
  EXPECT_FALSE(dispatcher.hasFailed());
  EXPECT_THAT(batches(),
              ElementsAre(ElementsAre("a", "b"), ElementsAre("meanwhile"), ElementsAre("c")));
}

TEST_F(DispatcherTest, DiscardsWhatIsQueuedAtDestruction) {
  add(start(never, 10), {"a"});
  dispatcher_.reset();
  EXPECT_THAT(batches(), IsEmpty());
}

TEST_F(DispatcherTest, AFullQueueFailsForGoodAndDoesNotWaitForAStalledWorker) {
  std::promise<void> release;
  test::Tally written;
  onBatch_ = [&] {
    written.add();
    if (written.count() == 1) {
      release.get_future().wait();
    }
  };
  auto& dispatcher = start(1ms, 3);
  add(dispatcher, {"being written"});
  ASSERT_TRUE(written.reaches(1));
  add(dispatcher, {"a", "b", "c", "too much", "e", "f", "g", "h"});
  const auto expected = ElementsAre(ElementsAre("being written"), ElementsAre("CriticalLarge"));
  EXPECT_THAT(batches(), expected);  // the marker comes from this thread
  release.set_value();
  dispatcher.join();
  EXPECT_THAT(batches(), expected);
}

TEST_F(DispatcherTest, ReportsAssertionsTheWayTheStartingThreadDoes) {
  const test::AssertionRecorder assertions;
  onBatch_ = [] { assert::Assert::addAssert({"from the worker", "f", "file", 1}); };
  add(start(never, 2), {"a"});
  dispatcher_->join();
  EXPECT_THAT(assertions.lines(), ElementsAre("f (file:1): from the worker"));
}

}  // namespace
}  // namespace qel::log::analytics
