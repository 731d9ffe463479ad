#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "host/QelUtilities/Mutex.h"

namespace qel::util {

/// Lets one worker sleep until a deadline and lets any other thread wake it early, for good.
class Sleeper {
 public:
  /// How a sleep ended; a stop goes before the deadline.
  enum class Outcome { Stopped, TimedOut };

  /// Sleeps until `deadline`. Stopped when a stop was requested at any time before the sleep ended,
  /// be it before it began or at the very deadline.
  Outcome sleepUntil(std::chrono::steady_clock::time_point deadline);

  /// Requests the stop and wakes the worker. Only the first call does anything. Any thread.
  void stop();

 private:
  enum State : std::int32_t { Armed = -1, StopRequested = 0 };

  std::atomic<bool> valid_{true};  ///< until the first stop
  utilities::Mutex mutex_;
  utilities::Condition wake_;
  State state_ QEL_GUARDED_BY(mutex_) = Armed;
};

/// The end of a sleep of `interval` that begins at `now`: `now` itself for an interval of zero or
/// less, the last moment that the clock can tell when the sum would lie beyond it.
std::chrono::steady_clock::time_point deadlineAfter(std::chrono::steady_clock::time_point now,
                                                    std::chrono::duration<double> interval);

}  // namespace qel::util
