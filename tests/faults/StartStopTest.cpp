#include <malloc.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "tests/faults/Effort.h"
#include "tests/support/Site.h"

namespace qel::test {
namespace {

using namespace broadcaster;

/// The bytes that are allocated in this process. Sanitizers count none.
std::ptrdiff_t allocatedBytes() {
#ifdef _WIN32
  const auto heap = reinterpret_cast<HANDLE>(_get_heap_handle());
  std::ptrdiff_t bytes = 0;
  HeapLock(heap);
  for (PROCESS_HEAP_ENTRY entry{}; HeapWalk(heap, &entry) != 0;) {
    bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
  }
  HeapUnlock(heap);
  return bytes;
#else
  return static_cast<std::ptrdiff_t>(mallinfo2().uordblks);
#endif
}

/// Uses all threads of the library at the same time, for a tenth of a second.
void beBusy(Session& session, const std::string& directory, std::atomic<int>& inserted) {
  const auto end = steady_clock::now() + 100ms;
  reports::MemoryUsageObserver observer(session.databases,
                                        {.samplingInterval = 1ms, .reportingInterval = 20ms});
  observer.start();
  std::vector<std::function<void()>> actions(8, [&] { session.insert(inserted++); });
  actions.emplace_back([&] { observer.reportDetailedMemoryUsageOfCurrentProcessForCrash(); });
  actions.emplace_back([&] { observer.reportDetailedMemoryUsageOfSystemForCrash(); });
  actions.emplace_back([&] { SupportDatabaseClient(1s).initialize(directory); });
  std::vector<std::jthread> threads;
  for (const auto& action : actions) {
    threads.emplace_back([&] {
      while (steady_clock::now() < end) {
        action();
        std::this_thread::sleep_for(4ms);
      }
    });
  }
  // The host's own thread.
  while (steady_clock::now() < end) {
    ActionBroadcaster::getInstance().notify(&ActionListenerInterface::onHelpAction,
                                            event::HelpActionEvent{{"topic", {{"key", "value"}}}});
    ApplicationBroadcaster::getInstance().notify(
        &ApplicationListenerInterface::onApplicationCrashed,
        event::ApplicationCrashEvent{{"crash"}, 1});
    session.databases.join();
    session.client.startSendingItems();
  }
}

TEST(StartStopTest, BusySessionsStoreEachRowOnceAndFreeTheirMemory) {
  const Site site;
  const int sessions = effort(20, 1000);
  std::atomic<int> inserted{0};
  const auto allocated = [&] {
    auto bytes = allocatedBytes();
    for (const auto& [head, body] : site.server().requests()) {
      bytes -= std::ssize(head) + std::ssize(body) + 128;
    }
    return bytes;
  };
  std::ptrdiff_t allocatedAfterATenth = 0;
  for (int i = 1; i <= sessions; ++i) {
    auto session = std::make_unique<Session>(site.directory(), 1s);
    beBusy(*session, site.directory(), inserted);
    session->databases.join();
    ASSERT_FALSE(session->databases.errorOccurred());
    ASSERT_LT(releaseTime(std::move(session)), exitDeadline + 1s);
    if (i == sessions / 10) {
      allocatedAfterATenth = allocated();
    }
  }
  const auto growth = allocated() - allocatedAfterATenth;
  EXPECT_LT(growth, 1'048'576);
  EXPECT_GT(inserted, 10 * sessions);
  const auto stored = site.acceptedOrWaiting();
  const auto supported = textsIn(site.supportFile());
  EXPECT_EQ(stored.size(), std::size_t(inserted));
  EXPECT_LT(supported.size(), std::size_t(inserted)) << "retention has deleted rows";
  for (const auto& numbers : {stored, supported}) {
    EXPECT_THAT(std::set<std::string>(numbers.begin(), numbers.end()),
                testing::SizeIs(numbers.size()));
  }
  measured() << sessions << " sessions, " << inserted << " rows, each accepted or waiting once, "
             << growth << " bytes more allocated\n";
}

constexpr const char* exitLine = "the process exits at ";

/// Exits while a pass is stalled and old rows are deleted. The client is a static object, or
/// nobody releases it.
[[noreturn]] void exitWithClient(bool isReleased) {
  static auto& site = *new Site(stalledServer());
  SupportDatabaseClient({}).initialize(site.directory());
  query(site.supportFile(), insertionOfOldRows);
  site.store({"1"});
  static auto session = std::make_unique<Session>(site.directory(), 1s);
  const bool isUnderWay = site.server().waitFor(1);
  if (isReleased) {
    utilities::setExitDeadline(exitDeadline);
  } else {
    static auto* const leaked = session.release();
    leaked->insert(2);
  }
  std::cerr << exitLine << steady_clock::now().time_since_epoch().count() << std::endl;
  std::exit(isUnderWay ? 7 : 1);
}

/// Whether a process with this standard error has just ended, and began to exit shortly before.
bool hasExitedInTime(const std::string& errors) {
  const auto line = errors.find(exitLine);
  if (line == std::string::npos) {
    return false;
  }
  const steady_clock::duration begin(std::stoll(errors.substr(line + std::strlen(exitLine))));
  // The exit may take a second more than the deadline. Sanitizers need longer.
  return steady_clock::now().time_since_epoch() - begin < exitDeadline + 4s;
}

TEST(StartStopTest, TheProcessExitsWithItsOwnStatusDuringAPass) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const TemporaryDirectory directory;
  setTemporaryRoot(directory.text());  // for the files of the exiting processes
  // A client that nobody releases joins no thread, which is no leak here.
  const char* const options = getenv("TSAN_OPTIONS");
  const std::string others = options == nullptr ? "" : options;
  setEnvironment("TSAN_OPTIONS", others + ":report_thread_leaks=0");
  const testing::Matcher<const std::string&> inTime = testing::Truly(hasExitedInTime);
  EXPECT_EXIT(exitWithClient(true), testing::ExitedWithCode(7), inTime);
  EXPECT_EXIT(exitWithClient(false), testing::ExitedWithCode(7), inTime);
}

}  // namespace
}  // namespace qel::test
