#include "Core/Utilities/Threads/ThreadedLoop.h"

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "Core/Utilities/Assertions/FailedCheck.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/StandardError.h"
#include "host/QelUtilities/TypeName.h"

namespace qel::util {
namespace {

constexpr CheckedClass thisClass{"qel::util::ThreadedLoop", "Core/Utilities/Threads/ThreadedLoop"};
constexpr FailedCheck emptyFunction{"perform", 104, "Assert: Function is empty"};
constexpr FailedCheck stopBeforePerform{
    "stop", 131, "Assert: Sleeper is not in a valid state. Was stop called before perform?"};

bool runsAtStart(const RunPolicy& policy) {
  return policy.runAtEdges &&
         (policy.runMode == RunPolicy::AtStart || policy.runMode == RunPolicy::AtStartAndStop);
}

bool runsAtStop(const RunPolicy& policy) {
  return policy.runAtEdges &&
         (policy.runMode == RunPolicy::AtStop || policy.runMode == RunPolicy::AtStartAndStop);
}

/// Writes nothing if memory allocation fails. Outside Windows, also writes nothing if writing would
/// block. On Windows, the worker waits for a full pipe or a console in selection mode.
void reportFailure(const std::type_info& type, std::string_view separator,
                   const char* message) noexcept try {
  std::string line = "Assert in ThreadedLoop(" + utilities::typeName(type);
  utilities::writeLineToStandardError(std::move(line.append(separator).append(message)));
} catch (...) {
  return;
}

}  // namespace

ThreadedLoop::~ThreadedLoop() { stopAndJoin(); }

void ThreadedLoop::stop() {
  {
    const utilities::MutexLock lock(sleeperMutex_);
    if (sleeper_) {
      sleeper_->stop();
      return;
    }
  }
  report(thisClass, stopBeforePerform);
}

void ThreadedLoop::start(Work work) {
  if (!work.function) {
    report(thisClass, emptyFunction);
    return;
  }
  stopAndJoin();
  auto sleeper = std::make_unique<Sleeper>();
  Sleeper& sleeperOfWorker = *sleeper;
  {
    const utilities::MutexLock lock(sleeperMutex_);
    sleeper_ = std::move(sleeper);
  }
  isRunning_ = true;
  try {
    thread_ = std::thread([this, &sleeperOfWorker, work = std::move(work)] {
      run(work, sleeperOfWorker);
      isRunning_ = false;
    });
  } catch (...) {
    isRunning_ = false;
    throw;
  }
}

void ThreadedLoop::stopAndJoin() {
  if (!thread_.joinable()) {
    return;
  }
  stop();
  // The mutex is not locked here, because the current run may wait for a thread that is about to
  // call `stop`.
  thread_.join();
}

void ThreadedLoop::run(const Work& work, Sleeper& sleeper) {
  if (work.setup) {
    invoke(work.setup.target_type(), [&work] {
      work.setup();
      return true;
    });
  }
  if (runsAtStart(work.policy) && !invoke(work.function.target_type(), work.function)) {
    return;
  }
  while (sleeper.sleepUntil(deadlineAfter(std::chrono::steady_clock::now(), work.interval)) ==
         Sleeper::Outcome::TimedOut) {
    if (!invoke(work.function.target_type(), work.function)) {
      const bool retrySucceeded = invoke(work.function.target_type(), work.function);
      if (!retrySucceeded) {
        return;
      }
    }
  }
  if (runsAtStop(work.policy)) {
    invoke(work.function.target_type(), work.function);
  }
}

bool ThreadedLoop::invoke(const std::type_info& type, const std::function<bool()>& function) {
  try {
    return function();
  } catch (const std::exception& failure) {
    reportFailure(type, "): ", failure.what());
  } catch (...) {
    reportFailure(type, ")", "");
  }
  debuggerBreak();
  return false;
}

void ThreadedLoop::debuggerBreak() { utilities::debugger::Debugger::vBreak(); }

}  // namespace qel::util
