#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <typeinfo>
#include <utility>

#include "Core/Utilities/Threads/Sleeper.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::util {

/// Defines whether the callable of a loop also runs when the loop starts and stops.
struct RunPolicy {
  /// When the callable also runs: before the first interval, after a stop, or both. After a failure
  /// has ended the loop, a stop does not run the callable.
  enum Mode : std::int32_t { AtStart = 0, AtStop = 1, AtStartAndStop = 2 };

  Mode runMode = AtStart;   ///< used only if `runAtEdges` is true
  bool runAtEdges = false;  ///< if false, runs only after each interval
};

/// Runs one callable periodically on its own worker thread.
///
/// **Lifecycle.** `perform` starts the loop. `stop`, the destructor or failures of the callable end
/// the loop, and `perform` can start it again. The interval is measured from the end of one run to
/// the start of the next, on the steady clock.
///
/// **Errors.** The callable fails by returning false or by throwing. A failed periodic run is
/// immediately retried once. The loop ends if the retry fails, or if the run at the start of the
/// loop fails. The result of the run after a stop is ignored. Exceptions never leave the worker.
/// Their messages are written to standard error. Writing them blocks only on Windows.
///
/// **Threads.** `stop` is thread-safe and may also be called inside the callable and during
/// `perform`. `perform`, `stopAndJoin` and the destructor must not be called concurrently, and
/// never on the worker.
class ThreadedLoop {
 public:
  ThreadedLoop() = default;
  ThreadedLoop(const ThreadedLoop&) = delete;
  ThreadedLoop& operator=(const ThreadedLoop&) = delete;
  /// Stops the worker and waits until it ends, including the final run if the policy has one.
  ~ThreadedLoop();

  /// Starts the worker. If a worker is already running, first stops it and waits for it. `setup`,
  /// unless empty, runs once on the worker before anything else. An exception from `setup` is
  /// reported like one from the callable, but the loop continues. An empty `function` is reported
  /// as an assertion failure, and nothing starts. Throws `std::system_error` if no thread can be
  /// created.
  template <typename Rep, typename Period>
  void perform(std::function<void()> setup, std::function<bool()> function,
               std::chrono::duration<Rep, Period> interval, const RunPolicy& policy) {
    start({std::move(setup), std::move(function), interval, policy});
  }

  /// Asks the worker to finish, without waiting for it. Reports an assertion failure if no worker
  /// was ever started.
  void stop();

  /// Does what the destructor does. The loop can be started again.
  void stopAndJoin();

  /// Whether a worker was started and has not ended. Thread-safe.
  bool isRunning() const { return isRunning_; }

 private:
  struct Work {
    std::function<void()> setup;
    std::function<bool()> function;
    std::chrono::duration<double> interval;
    RunPolicy policy;
  };

  void start(Work work);
  static void run(const Work& work, Sleeper& sleeper);
  static bool invoke(const std::type_info& type, const std::function<bool()>& function);
  static void debuggerBreak();

  utilities::Mutex sleeperMutex_;
  /// The sleeper outlives the worker that uses it.
  std::unique_ptr<Sleeper> sleeper_ QEL_GUARDED_BY(sleeperMutex_);
  std::atomic<bool> isRunning_{false};
  std::thread thread_;  ///< used only by `perform`, `stopAndJoin` and the destructor
};

}  // namespace qel::util
