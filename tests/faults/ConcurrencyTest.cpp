#include <atomic>
#include <chrono>
#include <thread>

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/Exception.h"
#include "tests/faults/Effort.h"
#include "tests/faults/Site.h"

namespace qel::test {
namespace {

using namespace broadcaster;
using namespace std::chrono_literals;
using log::analytics::reports::MemoryUsageObserver;
using std::chrono::steady_clock;

TEST(ConcurrencyTest, LosesAndDoublesNothingWhateverRunsBesides) {
  const auto end = steady_clock::now() + effort(3s, 600s);
  const auto isOver = [&] { return steady_clock::now() >= end; };
  const Site site;
  std::optional<Session> session(std::in_place, site.directory(), 1s);
  std::optional<MemoryUsageObserver> observer(
      std::in_place, session->databases,
      log::analytics::reports::MemoryUsageOptions{.samplingInterval = 1ms,
                                                  .reportingInterval = 20ms});
  observer->start();
  std::atomic<int> inserted{0};
  std::atomic<int> refusals{0};
  {
    std::vector<std::jthread> threads;
    const auto repeat = [&](std::chrono::milliseconds pause, const auto& action) {
      threads.emplace_back([&isOver, pause, action] {
        while (!isOver()) {
          action();
          std::this_thread::sleep_for(pause);
        }
      });
    };
    for (int i = 0; i < 8; ++i) {
      repeat(4ms, [&] { session->insert(inserted++); });
    }
    repeat(10ms, [&] { observer->reportDetailedMemoryUsageOfCurrentProcessForCrash(); });
    repeat(10ms, [&] { observer->reportDetailedMemoryUsageOfSystemForCrash(); });
    // Deletes rows of the support database under the session's feet.
    repeat(100ms, [&] {
      try {
        log::analytics::SupportDatabaseClient(1s).initialize(site.directory());
      } catch (const qel::exception&) {
        ++refusals;  // Opening does not wait for more than a second.
      }
    });
    // The host's own thread: events, crashes, and passes one after the other.
    while (!isOver()) {
      ActionBroadcaster::getInstance().notify(
          &ActionListenerInterface::onHelpAction,
          event::HelpActionEvent{{"topic", {{"key", "value"}}}});
      ApplicationBroadcaster::getInstance().notify(
          &ApplicationListenerInterface::onApplicationCrashed,
          event::ApplicationCrashEvent{{"crash"}, 1});
      session->databases.join();
      session->client.startSendingItems();
    }
  }
  observer.reset();
  session->databases.join();
  EXPECT_FALSE(session->databases.errorOccurred());
  session.reset();
  EXPECT_GT(inserted, 1000);
  EXPECT_LT(refusals, effort(3, 600));
  EXPECT_TRUE(site.acceptedOrWaiting() == numbersBelow(inserted));
  const auto supported = site.inSupportDatabase();
  EXPECT_LT(supported.size(), std::size_t(inserted));
  EXPECT_TRUE(std::ranges::adjacent_find(supported) == supported.end());
}

}  // namespace
}  // namespace qel::test
