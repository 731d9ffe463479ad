#include <deque>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "host/QelUtilities/Debugger.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/StalledPipe.h"
#include "tests/support/Tally.h"

namespace {

using namespace std::chrono_literals;
using qel::test::Tally;
using qel::util::RunPolicy;
using qel::util::ThreadedLoop;

constexpr auto never = 1000h;
constexpr auto soon = 1ms;

bool succeed() { return true; }

/// Gives these answers, one a call, then always true, and counts the calls.
std::function<bool()> giving(std::deque<bool> answers, Tally& calls) {
  return [answers = std::move(answers), &calls]() mutable {
    calls.add();
    answers.push_back(true);
    const bool answer = answers.front();
    answers.pop_front();
    return answer;
  };
}

TEST(ThreadedLoopTest, RunsAtTheEdgesThatThePolicyNames) {
  const struct {
    RunPolicy policy;
    int atStart;
    int atStop;
  } cases[] = {
      {{RunPolicy::AtStart, true}, 1, 0},
      {{RunPolicy::AtStop, true}, 0, 1},
      {{RunPolicy::AtStartAndStop, true}, 1, 1},
      {{RunPolicy::AtStartAndStop, false}, 0, 0},
  };
  for (const auto& [policy, atStart, atStop] : cases) {
    Tally calls;
    ThreadedLoop loop;
    loop.perform({}, giving({}, calls), never, policy);
    EXPECT_TRUE(calls.reaches(atStart));
    loop.perform({}, succeed, never, {});  // waits for the old worker
    EXPECT_EQ(calls.count(), atStart + atStop) << policy.runMode << " " << policy.runAtEdges;
  }
}

TEST(ThreadedLoopTest, SurvivesOneFailureInARowAndEndsAfterTwo) {
  const struct {
    RunPolicy policy;
    std::deque<bool> answers;
    int callsUntilTheEnd;
  } cases[] = {
      {{}, {false, true, true, false, false}, 5},
      {{RunPolicy::AtStart, true}, {false}, 1},                      // no retry at the start edge
      {{RunPolicy::AtStartAndStop, true}, {true, false, false}, 3},  // ended, so no stop edge
  };
  for (const auto& [policy, answers, callsUntilTheEnd] : cases) {
    Tally calls;
    ThreadedLoop loop;
    loop.perform({}, giving(answers, calls), soon, policy);
    EXPECT_TRUE(calls.reaches(callsUntilTheEnd));
    loop.perform({}, succeed, never, {});
    EXPECT_EQ(calls.count(), callsUntilTheEnd);
  }
}

struct NamedCallable {
  bool operator()() const { throw std::runtime_error("disk on fire"); }
};

TEST(ThreadedLoopTest, WritesExceptionsToStandardErrorAndCountsThemAsFailures) {
  Tally breaks;
  qel::utilities::debugger::Debugger::setHook([&] { breaks.add(); });
  testing::internal::CaptureStderr();
  {
    ThreadedLoop loop;
    loop.perform({}, NamedCallable(), soon, {});
    EXPECT_TRUE(breaks.reaches(2));
    loop.perform({}, []() -> bool { throw 7; }, never, {RunPolicy::AtStart, true});
    EXPECT_TRUE(breaks.reaches(3));
  }
  EXPECT_THAT(
      testing::internal::GetCapturedStderr(),
      testing::MatchesRegex("(Assert in ThreadedLoop\\(.*NamedCallable\\): disk on fire\n){2}"
                            "Assert in ThreadedLoop\\(.*(lambda|\\$_).*\\)\n"));
  qel::utilities::debugger::Debugger::setHook({});
}

TEST(ThreadedLoopTest, GoesOnWithoutASetUpThatThrows) {
  Tally calls;
  ThreadedLoop loop;
  testing::internal::CaptureStderr();
  loop.perform([] { throw std::runtime_error("no set-up"); }, giving({}, calls), soon, {});
  EXPECT_TRUE(calls.reaches(1));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("Assert in ThreadedLoop\\(.*\\): no set-up\n"));
}

/// Fails by its time limit when the worker waits for the pipe's reader.
TEST(ThreadedLoopTest, DoesNotWaitForAReaderOfStandardError) {
  const qel::test::StalledPipe pipe;
  const int standardError = dup(STDERR_FILENO);
  dup2(open(pipe.path().c_str(), O_WRONLY), STDERR_FILENO);
  {
    Tally calls;
    ThreadedLoop loop;
    loop.perform({},
                 [&]() -> bool {
                   calls.add();
                   throw 1;
                 },
                 soon, {});
    EXPECT_TRUE(calls.reaches(2));
  }
  dup2(standardError, STDERR_FILENO);
}

TEST(ThreadedLoopTest, ReportsMisuse) {
  const qel::test::AssertionRecorder assertions;
  ThreadedLoop loop;
  loop.stop();
  loop.perform({}, {}, 1s, {});
  EXPECT_THAT(assertions.lines(),
              testing::ElementsAre(
                  "qel::util::ThreadedLoop::stop (Core/Utilities/Threads/ThreadedLoop:131): "
                  "Assert: Sleeper is not in a valid state. Was stop called before perform?",
                  "qel::util::ThreadedLoop::perform "
                  "(Core/Utilities/Threads/ThreadedLoop:104): Assert: Function is empty"));
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
    loop.perform({}, succeed, std::chrono::microseconds(i % 3), {RunPolicy::AtStartAndStop, true});
  }
  enough = true;
  stopper.join();
}

}  // namespace
