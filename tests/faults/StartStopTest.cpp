#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include <malloc.h>
#include <unistd.h>

#include "host/QelUtilities/ExitDeadline.h"
#include "tests/faults/Effort.h"
#include "tests/faults/OldRows.h"
#include "tests/faults/Site.h"

namespace qel::test {
namespace {

using namespace std::chrono_literals;
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

TEST(StartStopTest, ManyStartsAndStopsLeaveNoTraceButTheRows) {
  const Site site;
  const int sessions = effort(40, 1000);
  constexpr int rowsOfEach = 20;
  std::atomic<int> number{0};
  std::size_t allocatedAfterATenth = 0;  // It stays 0 under sanitizers, which look for leaks.
  for (int i = 1; i <= sessions; ++i) {
    auto session = std::make_unique<Session>(site.directory());
    const auto insertRows = [&] {
      for (int row = 0; row < rowsOfEach; ++row) {
        session->insert(number++);
      }
    };
    insertRows();
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 8; ++thread) {
      threads.emplace_back(insertRows);
    }
    session->databases.join();
    threads.clear();  // What they insert behind the join is lost.
    ASSERT_FALSE(session->databases.errorOccurred());
    ASSERT_LT(release(std::move(session)), deadline + 1s);
    if (i == sessions / 10) {
      allocatedAfterATenth = mallinfo2().uordblks;
    }
  }
  EXPECT_LT(mallinfo2().uordblks, allocatedAfterATenth + 8'388'608);
  const auto stored = site.inSupportDatabase();
  EXPECT_GE(stored.size(), std::size_t(sessions * rowsOfEach));
  EXPECT_TRUE(stored == site.acceptedOrWaiting());
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
