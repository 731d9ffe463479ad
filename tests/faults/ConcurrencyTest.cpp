#include <atomic>
#include <chrono>
#include <thread>

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/Exception.h"
#include "tests/faults/Effort.h"
#include "tests/faults/Session.h"

namespace qel::test {
namespace {

using namespace std::chrono_literals;
using broadcaster::ActionBroadcaster;
using broadcaster::ActionListenerInterface;
using broadcaster::ApplicationBroadcaster;
using broadcaster::ApplicationListenerInterface;
using std::chrono::steady_clock;

/// Everything that the library does on threads, at once, until the time is over.
class ConcurrencyTest : public testing::Test {
 protected:
  /// Numbered rows, a few at a time, so that the queue never overflows.
  void insertRows() {
    while (!isOver()) {
      for (int i = 0; i < 5; ++i) {
        session_->insert(std::make_unique<Numbered>(inserted_++));
      }
      std::this_thread::sleep_for(10ms);
    }
  }

  void crash() {
    while (!isOver()) {
      observer_->reportDetailedMemoryUsageOfCurrentProcessForCrash();
      observer_->reportDetailedMemoryUsageOfSystemForCrash();
      std::this_thread::sleep_for(10ms);
    }
  }

  /// Deletes rows of the support database under the session's feet.
  void deleteOldRows() {
    while (!isOver()) {
      try {
        log::analytics::SupportDatabaseClient(1s).initialize(site_.directory());
      } catch (const qel::exception&) {
        ++refusals_;  // Opening does not wait for more than a second.
      }
      std::this_thread::sleep_for(100ms);
    }
  }

  /// The host's own thread: events, crashes, and passes one after the other.
  void beTheHost() {
    while (!isOver()) {
      ActionBroadcaster::getInstance().notify(
          &ActionListenerInterface::onHelpAction,
          broadcaster::event::HelpActionEvent{{"topic", {{"key", "value"}}}});
      ApplicationBroadcaster::getInstance().notify(
          &ApplicationListenerInterface::onApplicationCrashed,
          broadcaster::event::ApplicationCrashEvent{{"crash"}, 1});
      session_->databases.join();
      session_->client.startSendingItems();
    }
  }

  bool isOver() const { return steady_clock::now() >= end_; }

  const steady_clock::time_point end_ = steady_clock::now() + effort(3s, 600s);
  std::atomic<int> inserted_{0};
  std::atomic<int> refusals_{0};
  Site site_;
  std::optional<Session> session_{std::in_place, site_.directory(), 1s};
  std::optional<log::analytics::reports::MemoryUsageObserver> observer_{
      std::in_place, session_->databases,
      log::analytics::reports::MemoryUsageOptions{.samplingInterval = 1ms,
                                                  .reportingInterval = 20ms}};
};

TEST_F(ConcurrencyTest, LosesAndDoublesNothingWhateverRunsBesides) {
  observer_->start();
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([this] { insertRows(); });
    }
    threads.emplace_back([this] { crash(); });
    threads.emplace_back([this] { deleteOldRows(); });
    beTheHost();
  }
  observer_.reset();
  session_->databases.join();
  EXPECT_FALSE(session_->databases.errorOccurred());
  session_.reset();
  EXPECT_GT(inserted_, 1000);
  EXPECT_LT(refusals_, effort(3, 600));
  EXPECT_TRUE(site_.acceptedOrWaiting() == numbersUpTo(inserted_));
  const auto supported = site_.inSupportDatabase();
  EXPECT_LT(supported.size(), std::size_t(inserted_));
  EXPECT_TRUE(std::ranges::adjacent_find(supported) == supported.end());
}

}  // namespace
}  // namespace qel::test
