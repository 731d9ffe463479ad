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

/// Whether the callable of a loop also runs when the loop starts and stops.
struct RunPolicy {
  /// Before the first interval, after a stop, or both. A loop that failures ended does not run at
  /// its stop.
  enum Mode : std::int32_t { AtStart = 0, AtStop = 1, AtStartAndStop = 2 };

  Mode runMode = AtStart;   ///< used only with `runAtEdges`
  bool runAtEdges = false;  ///< false: only after each interval, in every mode
};

/// Runs one callable periodically on its own worker thread.
///
/// **Lifecycle.** `perform` starts the loop. `stop`, the destructor or failures of the callable end
/// it, and `perform` can start it again. The interval lasts from the end of one run to the start of
/// the next, on the steady clock.
///
/// **Errors.** A callable fails by returning false or by throwing. A failed periodic run is retried
/// once at once. A second failure, or a failure of the run at the start, ends the loop. The result
/// of the run at the stop is ignored. An exception never leaves the worker. It is written to
/// standard error unless that would have to wait for its reader.
///
/// **Threads.** Any thread may call `stop` at any time, also inside the callable and during
/// `perform`. `perform` and the destructor belong to one thread at a time and never to the worker.
class ThreadedLoop {
 public:
  ThreadedLoop() = default;
  ThreadedLoop(const ThreadedLoop&) = delete;
  ThreadedLoop& operator=(const ThreadedLoop&) = delete;
  /// Stops the worker and waits for it, including its run at the stop.
  ~ThreadedLoop();

  /// Starts the worker. First stops a worker that already runs and waits for it. `setup`, unless
  /// empty, runs once on the worker before anything else. An exception from it is reported like one
  /// from the callable, and the loop goes on. An empty `function` is reported as an assertion, and
  /// nothing starts. Throws `std::system_error` when no thread can be created.
  template <typename Rep, typename Period>
  void perform(std::function<void()> setup, std::function<bool()> function,
               std::chrono::duration<Rep, Period> interval, const RunPolicy& policy) {
    start({std::move(setup), std::move(function), interval, policy});
  }

  /// Asks the worker to finish and does not wait for it. Reports an assertion if there was no
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
