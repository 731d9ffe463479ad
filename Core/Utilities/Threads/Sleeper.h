#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "host/QelUtilities/Mutex.h"

namespace qel::util {

/// Lets one worker sleep until a deadline. Any other thread can wake it early, for good.
class Sleeper {
 public:
  /// How a sleep ended. A stop takes precedence over the deadline.
  enum class Outcome { Stopped, TimedOut };

  /// Sleeps until `deadline`. The result is `Stopped` if a stop was requested before the sleep
  /// ended. This includes a request before the sleep began or exactly at the deadline.
  Outcome sleepUntil(std::chrono::steady_clock::time_point deadline);

  /// Requests the stop and wakes the worker. Only the first call has an effect. Any thread.
  void stop();

 private:
  enum State : std::int32_t { Armed = -1, StopRequested = 0 };

  std::atomic<bool> valid_{true};  ///< until the first stop
  utilities::Mutex mutex_;
  utilities::Condition wake_;
  State state_ QEL_GUARDED_BY(mutex_) = Armed;
};

/// The end of a sleep of `interval` that begins at `now`. An interval of zero or less gives `now`.
/// A sum beyond the range of the clock gives its last moment.
std::chrono::steady_clock::time_point deadlineAfter(std::chrono::steady_clock::time_point now,
                                                    std::chrono::duration<double> interval);

}  // namespace qel::util
