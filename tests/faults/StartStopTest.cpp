#include <barrier>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <malloc.h>
#include <unistd.h>

#include "tests/faults/Effort.h"
#include "tests/faults/OldRows.h"
#include "tests/faults/Session.h"

namespace qel::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
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

constexpr int inserters = 8;
constexpr int rowsOfEach = 20;

/// Numbered rows from eight threads, half of them while the queue is being written.
void insertFromAllSides(const Session& session, int firstNumber) {
  std::barrier halfWay(inserters + 1);
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < inserters; ++thread) {
    threads.emplace_back([&, number = firstNumber + thread * rowsOfEach]() mutable {
      for (int row = 0; row < rowsOfEach; ++row) {
        if (row == rowsOfEach / 2) {
          halfWay.arrive_and_wait();
        }
        session.insert(std::make_unique<Numbered>(number++));
      }
    });
  }
  halfWay.arrive_and_wait();
  session.databases.join();
}

/// Kilobytes, without what the allocator merely keeps.
long residentMemory() {
  malloc_trim(0);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * sysconf(_SC_PAGESIZE) / 1024;
}

constexpr bool sanitized =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    true;  // memory that was given back stays resident then
#else
    false;
#endif

TEST(StartStopTest, ManyStartsAndStopsLeaveNoTraceButTheRows) {
  const Site site;
  const int sessions = effort(40, 1000);
  long memoryAfterATenth = 0;
  for (int i = 0; i < sessions; ++i) {
    auto session = std::make_unique<Session>(site.directory());
    insertFromAllSides(*session, i * inserters * rowsOfEach);
    ASSERT_FALSE(session->databases.errorOccurred());
    ASSERT_LT(release(std::move(session)), deadline + 1s);
    if (i + 1 == sessions / 10) {
      memoryAfterATenth = residentMemory();
    }
  }
  if (!sanitized) {
    EXPECT_LT(residentMemory(), memoryAfterATenth + 8'192);
  }
  const auto stored = site.inSupportDatabase();
  EXPECT_GE(stored.size(), std::size_t(sessions * inserters * rowsOfEach / 2));
  EXPECT_TRUE(stored == site.acceptedOrWaiting());
}

TEST(StartStopTest, AStalledPassEndsWithinTheExitDeadlineAndKeepsItsRows) {
  struct Row {
    const char* name;
    Protocol protocol;
    std::size_t size;
    bool isLastPass;
  };
  for (const auto& row : {Row{"shaking hands", Protocol::Silent, 1, false},
                          Row{"uploading", Protocol::Tls, 16'000'000, false},
                          Row{"waiting for the answer", Protocol::Tls, 1, false},
                          Row{"the pass at the stop", Protocol::Tls, 1, true}}) {
    SCOPED_TRACE(row.name);
    const Site site(Manner::Stalled, row.protocol);
    log::analytics::CipDatabaseClient earlier;
    earlier.initialize(site.directory());
    if (!row.isLastPass) {
      earlier.insertMultiple({"1", '{' + std::string(row.size, ' ') + '}'}, earlier.Items);
    }
    testing::internal::CaptureStderr();
    auto session = std::make_unique<Session>(site.directory());
    if (row.isLastPass) {
      session->insert(std::make_unique<Numbered>(1));
      session->databases.join();
    } else {
      EXPECT_TRUE(site.server().waitFor(1, row.protocol == Protocol::Silent ? 0 : 1));
    }
    EXPECT_LT(release(std::move(session)), deadline + 1s);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(site.server().connections(), 1);
    EXPECT_THAT(site.waiting(), testing::ElementsAre(1));
  }
}

enum class Owner { Static, Nobody };

/// What a host does that exits under its client: a pass is under way, and old rows are being
/// deleted.
[[noreturn]] void exitUnder(Owner owner) {
  static auto& site = *new Site(Manner::Stalled);
  makeOldRows(site.directory());
  log::analytics::CipDatabaseClient earlier;
  earlier.initialize(site.directory());
  earlier.insertMultiple({"1"}, earlier.Items);
  static auto session = std::make_unique<Session>(site.directory(), 1s);
  if (owner == Owner::Nobody) {
    static auto* const leaked = session.release();
    leaked->insert(std::make_unique<Numbered>(2));
  }
  const bool isUnderWay = site.server().waitFor(1, 1);
  if (owner == Owner::Static) {
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
  EXPECT_EXIT(exitUnder(Owner::Static), testing::ExitedWithCode(7), "");
  EXPECT_EXIT(exitUnder(Owner::Nobody), testing::ExitedWithCode(7), "");
  int processes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.path())) {
    if (entry.path().filename() == "SupportDatabase.db") {
      ++processes;
      EXPECT_THAT(query(entry.path(), "PRAGMA integrity_check"), testing::ElementsAre("ok"));
      EXPECT_THAT(query(entry.path(), "SELECT count(*) FROM Items WHERE timestamp_utc < '2001'"),
                  testing::ElementsAre(testing::AnyOf("0", "300000")));
    }
  }
  EXPECT_EQ(processes, 2);
}

}  // namespace
}  // namespace qel::test
