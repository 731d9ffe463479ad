#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <typeinfo>

#include "Core/Utilities/Threads/Sleeper.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::util {

/// At which ends of a loop its callable runs besides every interval.
struct RunPolicy {
  /// Before the first interval, after a stop, or both. A loop that gave up has no run at its stop.
  enum Mode : std::int32_t { AtStart = 0, AtStop = 1, AtStartAndStop = 2 };

  Mode runMode = AtStart;   ///< counts only with `runAtEdges`
  bool runAtEdges = false;  ///< false: on the interval only, whatever the mode
};

/// Runs one callable periodically on a worker thread of its own, until it is stopped or the
/// callable gives up.
///
/// A life goes: idle, `perform`, running, stopped (by `stop`, by the destructor, or by the callable
/// failing twice in a row), and from there `perform` again. The interval runs from the end of one
/// run to the start of the next, on the steady clock.
///
/// A callable fails by returning false or by throwing; an exception never leaves the worker, it is
/// written to standard error, unless that would have to wait for its reader. A failed periodic run
/// is retried once at once; a second failure, or a failure at the start edge, ends the loop. The
/// result at the stop edge is ignored.
///
/// `stop` may be called from any thread at any moment, also from within the callable and beside
/// `perform`. `perform` and the destructor belong to one thread at a time and never to the worker.
class ThreadedLoop {
 public:
  ThreadedLoop() = default;
  ThreadedLoop(const ThreadedLoop&) = delete;
  ThreadedLoop& operator=(const ThreadedLoop&) = delete;
  /// Stops the worker and waits for it, its run at the stop edge included.
  ~ThreadedLoop();

  /// Starts the worker; one that runs already is stopped and waited for first. `setup`, unless
  /// empty, runs once on the worker before anything else; what it throws is reported as an
  /// exception of the callable, and the loop goes on. An empty `function` is reported as an
  /// assertion and nothing starts. Throws `std::system_error` when there is no thread to be had.
  template <typename Rep, typename Period>
  void perform(std::function<void()> setup, std::function<bool()> function,
               std::chrono::duration<Rep, Period> interval, const RunPolicy& policy) {
    start({std::move(setup), std::move(function), interval, policy});
  }

  /// Asks the worker to finish and does not wait for it. Reported as an assertion when there was no
  /// `perform` before.
  void stop();

 private:
  struct Work {
    std::function<void()> setup;
    std::function<bool()> function;
    std::chrono::duration<double> interval;
    RunPolicy policy;
  };

  void start(Work work);
  void stopAndJoin();
  static void run(const Work& work, Sleeper& sleeper);
  static bool invoke(const std::type_info& type, const std::function<bool()>& function);
  static void debuggerBreak();

  utilities::Mutex sleeperMutex_;
  /// Outlives the worker that sleeps on it.
  std::unique_ptr<Sleeper> sleeper_ QEL_GUARDED_BY(sleeperMutex_);
  std::thread thread_;  ///< of the thread that performs and destroys
};

}  // namespace qel::util
