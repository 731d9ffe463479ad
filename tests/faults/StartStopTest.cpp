#include <malloc.h>
#include <unistd.h>

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "tests/faults/Effort.h"
#include "tests/support/Site.h"

namespace qel::test {
namespace {

using namespace broadcaster;
using namespace std::chrono_literals;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::ExitedWithCode;

/// In bytes, without the requests that the server keeps. Always 0 with a sanitizer.
std::ptrdiff_t allocatedWithout(const HttpsTestServer& server) {
  std::size_t kept = 0;
  for (const auto& request : server.requests()) {
    kept += 2 * sizeof request + request.head.size() + request.body.size();
  }
  return static_cast<std::ptrdiff_t>(mallinfo2().uordblks - kept);
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
  std::ptrdiff_t allocatedAfterATenth = 0;
  for (int i = 1; i <= sessions; ++i) {
    auto session = std::make_unique<Session>(site.directory(), 1s);
    beBusy(*session, site.directory(), inserted);
    session->databases.join();
    ASSERT_FALSE(session->databases.errorOccurred());
    ASSERT_LT(releaseTime(std::move(session)), exitDeadline + 1s);
    if (i == sessions / 10) {
      allocatedAfterATenth = allocatedWithout(site.server());
    }
  }
  const auto growth = allocatedWithout(site.server()) - allocatedAfterATenth;
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

/// Exits while a pass is stalled and old rows are deleted. The client is a static object, or
/// nobody releases it.
[[noreturn]] void exitWithClient(bool isReleased) {
  static auto& site = *new Site(stalledServer());
  // Retention deletes so many old rows for seconds.
  SupportDatabaseClient({}).initialize(site.directory());
  query(site.supportFile(),
        "INSERT INTO Items(json, timestamp_utc) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
        "SELECT i + 1 FROM n WHERE i < 300000) SELECT i, '2000-01-01' FROM n");
  site.store({"1"});
  static auto session = std::make_unique<Session>(site.directory(), 1s);
  const bool isUnderWay = site.server().waitFor(1, 1);
  if (isReleased) {
    utilities::setExitDeadline(exitDeadline);
  } else {
    static auto* const leaked = session.release();
    leaked->insert(2);
  }
  alarm(20);  // far below the time limits of an exchange
  std::exit(isUnderWay ? 7 : 1);
}

TEST(StartStopTest, TheProcessExitsWithItsOwnStatusDuringAPass) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const TemporaryDirectory directory;
  setenv("TMPDIR", directory.text().c_str(), 1);  // for the files of the exiting processes
  // A client that nobody releases joins no thread, which is no leak here.
  const char* const options = getenv("TSAN_OPTIONS");
  const std::string others = options == nullptr ? "" : options;
  setenv("TSAN_OPTIONS", (others + ":report_thread_leaks=0").c_str(), 1);
  EXPECT_EXIT(exitWithClient(true), ExitedWithCode(7), "");
  EXPECT_EXIT(exitWithClient(false), ExitedWithCode(7), "");
  int processes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.path())) {
    if (entry.path().filename() == "SupportDatabase.db") {
      ++processes;
      EXPECT_THAT(query(entry.path(), "PRAGMA integrity_check"), ElementsAre("ok"));
      EXPECT_THAT(query(entry.path(), "SELECT count(*) FROM Items WHERE timestamp_utc < '2001'"),
                  ElementsAre(testing::AnyOf("0", "300000")));
    }
  }
  EXPECT_EQ(processes, 2);
}

}  // namespace
}  // namespace qel::test
