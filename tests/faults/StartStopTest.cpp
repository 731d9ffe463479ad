#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>

#include <malloc.h>
#include <unistd.h>

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/faults/Effort.h"
#include "tests/faults/OldRows.h"
#include "tests/faults/Site.h"

namespace qel::test {
namespace {

using namespace broadcaster;
using namespace std::chrono_literals;
using log::analytics::reports::MemoryUsageObserver;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::ExitedWithCode;
using utilities::setExitDeadline;

constexpr auto deadline = 500ms;

/// Arms the deadline, releases the session and returns how long that took.
steady_clock::duration release(std::unique_ptr<Session> session) {
  const auto armed = steady_clock::now();
  setExitDeadline(deadline);
  session.reset();
  setExitDeadline(std::nullopt);
  return steady_clock::now() - armed;
}

void storeBefore(const Site& site, const std::vector<std::string>& rows) {
  log::analytics::CipDatabaseClient earlier;
  earlier.initialize(site.directory());
  earlier.insertMultiple(rows, earlier.Items);
}

/// In bytes, without what the server keeps. Sanitizers, which look for leaks themselves, tell 0.
std::ptrdiff_t allocatedBeside(const HttpsTestServer& server) {
  std::size_t kept = 0;
  for (const auto& request : server.requests()) {
    kept += 2 * sizeof request + request.head.size() + request.body.size();
  }
  return static_cast<std::ptrdiff_t>(mallinfo2().uordblks) - static_cast<std::ptrdiff_t>(kept);
}

/// Everything that the library does on threads, at once, until the time is over.
void beBusy(Session& session, const std::string& directory, std::atomic<int>& inserted) {
  const auto end = steady_clock::now() + 100ms;
  const auto isOver = [&] { return steady_clock::now() >= end; };
  MemoryUsageObserver observer(session.databases,
                               {.samplingInterval = 1ms, .reportingInterval = 20ms});
  observer.start();
  std::vector<std::jthread> threads;
  const auto repeat = [&](const std::function<void()>& action) {
    threads.emplace_back([&, action] {
      while (!isOver()) {
        action();
        std::this_thread::sleep_for(4ms);
      }
    });
  };
  for (int thread = 0; thread < 8; ++thread) {
    repeat([&] { session.insert(inserted++); });
  }
  repeat([&] { observer.reportDetailedMemoryUsageOfCurrentProcessForCrash(); });
  repeat([&] { observer.reportDetailedMemoryUsageOfSystemForCrash(); });
  repeat([&] { log::analytics::SupportDatabaseClient(1s).initialize(directory); });
  // The host's own thread: events, crashes, and passes one after the other.
  while (!isOver()) {
    ActionBroadcaster::getInstance().notify(&ActionListenerInterface::onHelpAction,
                                            event::HelpActionEvent{{"topic", {{"key", "value"}}}});
    ApplicationBroadcaster::getInstance().notify(
        &ApplicationListenerInterface::onApplicationCrashed,
        event::ApplicationCrashEvent{{"crash"}, 1});
    session.databases.join();
    session.client.startSendingItems();
  }
  threads.clear();
}

TEST(StartStopTest, ManyBusySessionsLoseAndDoubleNothingAndLeaveNoTrace) {
  keepTemporaryDirectoriesInMemory();
  const Site site;
  const int sessions = effort(20, 1000);
  std::atomic<int> inserted{0};
  std::ptrdiff_t allocatedAfterATenth = 0;
  for (int i = 1; i <= sessions; ++i) {
    auto session = std::make_unique<Session>(site.directory(), 1s);
    beBusy(*session, site.directory(), inserted);
    session->databases.join();
    ASSERT_FALSE(session->databases.errorOccurred());
    ASSERT_LT(release(std::move(session)), deadline + 1s);
    if (i == sessions / 10) {
      allocatedAfterATenth = allocatedBeside(site.server());
    }
  }
  const auto growth = allocatedBeside(site.server()) - allocatedAfterATenth;
  EXPECT_LT(growth, 1'048'576);
  EXPECT_GT(inserted, 10 * sessions);
  EXPECT_TRUE(site.acceptedOrWaiting() == numbersBelow(inserted));
  const auto supported = site.inSupportDatabase();
  EXPECT_LT(supported.size(), std::size_t(inserted));
  EXPECT_TRUE(std::ranges::adjacent_find(supported) == supported.end());
  measured() << sessions << " sessions, " << inserted << " rows, each accepted or waiting once, "
             << growth << " bytes more allocated\n";
}

TEST(StartStopTest, AStalledPassEndsWithinTheExitDeadlineAndKeepsItsRows) {
  ServerOptions silent;
  silent.protocol = Protocol::Silent;
  const struct {
    const char* name;
    ServerOptions server;
    std::size_t requests;
    bool isLastPass;
  } passes[] = {{"shaking hands", silent, 0, false},
                {"uploading", stalledServer(), 1, false},
                {"the pass at the stop", stalledServer(), 1, true}};
  for (const auto& pass : passes) {
    SCOPED_TRACE(pass.name);
    const Site site(pass.server);
    if (!pass.isLastPass) {
      storeBefore(site, {"1", '{' + std::string(16'000'000, ' ') + '}'});
    }
    testing::internal::CaptureStderr();
    auto session = std::make_unique<Session>(site.directory());
    if (pass.isLastPass) {
      session->insert(1);
      session->databases.join();
    } else {
      EXPECT_TRUE(site.server().waitFor(1, pass.requests));
    }
    EXPECT_LT(release(std::move(session)), deadline + 1s);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(site.server().connections(), 1);
    EXPECT_THAT(site.waiting(), ElementsAre(1));
  }
}

enum class Owner { Static, Nobody };

/// What a host does that exits under its client: a pass is under way, and old rows are being
/// deleted.
[[noreturn]] void exitUnder(Owner owner) {
  static auto& site = *new Site(stalledServer());
  makeOldRows(site.directory());
  storeBefore(site, {"1"});
  static auto session = std::make_unique<Session>(site.directory(), 1s);
  const bool isUnderWay = site.server().waitFor(1, 1);
  if (owner == Owner::Nobody) {
    static auto* const leaked = session.release();
    leaked->insert(2);
  } else {
    setExitDeadline(deadline);
  }
  alarm(20);  // far below the time limits of an exchange
  std::exit(isUnderWay ? 7 : 1);
}

TEST(StartStopTest, TheProcessExitsUnderALivingClientWithItsOwnStatus) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const TemporaryDirectory directory;
  setenv("TMPDIR", directory.text().c_str(), 1);  // for what the exiting processes leave behind
  // A client that nobody releases joins no thread, which is no finding here.
  const char* const options = getenv("TSAN_OPTIONS");
  const std::string others = options == nullptr ? "" : options;
  setenv("TSAN_OPTIONS", (others + ":report_thread_leaks=0").c_str(), 1);
  EXPECT_EXIT(exitUnder(Owner::Static), ExitedWithCode(7), "");
  EXPECT_EXIT(exitUnder(Owner::Nobody), ExitedWithCode(7), "");
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
