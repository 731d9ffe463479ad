#include <deque>

#include <gmock/gmock.h>

#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "host/QelUtilities/Debugger.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Pattern.h"
#include "tests/support/Tally.h"

namespace {

using namespace std::chrono_literals;
using qel::test::Tally;
using qel::util::RunPolicy;
using qel::util::ThreadedLoop;
using namespace testing;

constexpr auto never = std::chrono::duration<double>::max();
constexpr auto soon = 1ms;

bool succeed() { return true; }

TEST(ThreadedLoopTest, RunsAtTheEdgesOfItsPolicyAndEndsAfterTwoFailuresInARow) {
  const struct {
    RunPolicy policy;
    std::chrono::duration<double> interval;
    std::deque<bool> answers;  ///< followed by true
    int calls;
    int callsAtStop;
  } cases[] = {
      {{RunPolicy::AtStart, true}, never, {}, 1, 0},
      {{RunPolicy::AtStop, true}, never, {}, 0, 1},
      {{RunPolicy::AtStartAndStop, true}, never, {}, 1, 1},
      {{RunPolicy::AtStartAndStop, false}, never, {}, 0, 0},
      {{}, soon, {false, true, true, false, false}, 5, 0},
      {{RunPolicy::AtStart, true}, soon, {false}, 1, 0},  // no retry at the start
      {{RunPolicy::AtStartAndStop, true}, soon, {true, false, false}, 3, 0},
  };
  for (const auto& [policy, interval, answers, calls, callsAtStop] : cases) {
    Tally tally;
    ThreadedLoop loop;
    const auto function = [&tally, left = answers]() mutable {
      tally.add();
      left.push_back(true);
      const bool answer = left.front();
      left.pop_front();
      return answer;
    };
    loop.perform({}, function, interval, policy);
    EXPECT_TRUE(tally.reaches(calls));
    loop.perform({}, succeed, never, {});  // waits for the old worker
    EXPECT_EQ(tally.count(), calls + callsAtStop) << policy.runMode << " " << answers.size();
  }
}

struct NamedCallable {
  bool operator()() const { throw std::runtime_error("disk on fire"); }
};

[[noreturn]] void failThreeTimes() {
  Tally breaks;
  qel::utilities::debugger::Debugger::setHook([&] { breaks.add(); });
  {
    ThreadedLoop loop;
    loop.perform([] { throw 7; }, NamedCallable(), soon, {});  // runs without its set-up
    breaks.reaches(3);
  }
  std::_Exit(breaks.count());
}

TEST(ThreadedLoopTest, WritesExceptionsToStandardErrorAndCountsThemAsFailures) {
  EXPECT_EXIT(failThreeTimes(), ExitedWithCode(3),
              qel::test::MatchesPattern(
                  "Assert in ThreadedLoop\\(.*(lambda|\\$_).*\\)\n"
                  "(Assert in ThreadedLoop\\(.*NamedCallable\\): disk on fire\n){2}"));
}

TEST(ThreadedLoopTest, ReportsMisuse) {
  const qel::test::AssertionRecorder assertions;
  ThreadedLoop loop;
  loop.stop();
  loop.perform({}, {}, 1s, {});
  EXPECT_THAT(assertions.lines(),
              ElementsAre(HasSubstr("stop called before perform"), HasSubstr("Function is empty")));
}

/// Fails under ThreadSanitizer, or hangs, when a stop at any moment races with the worker or with
/// `perform`.
TEST(ThreadedLoopTest, TakesAStopAtAnyMomentFromAnyThread) {
  ThreadedLoop loop;
  loop.perform({}, succeed, soon, {});
  std::atomic<bool> enough{false};
  std::thread stopper([&] {
    while (!enough) {
      loop.stop();
    }
  });
  for (int i = 0; i < 300; ++i) {
    loop.perform({}, succeed, i % 2 == 0 ? never : 0s, {RunPolicy::AtStartAndStop, true});
  }
  enough = true;
  stopper.join();
}

}  // namespace
