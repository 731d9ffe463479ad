#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "host/QelUtilities/Mutex.h"

namespace qel::util {

/// Lets one worker sleep until a deadline. Another thread can stop the sleeper for good, which ends
/// the current sleep and all later ones at once.
class Sleeper {
 public:
  /// How a sleep ended. A stop takes precedence over the deadline.
  enum class Outcome { Stopped, TimedOut };

  /// Sleeps until `deadline` or until a stop is requested. Returns `Stopped` if the stop was
  /// requested before the sleep started, during the sleep, or exactly at the deadline.
  Outcome sleepUntil(std::chrono::steady_clock::time_point deadline);

  /// Requests the stop and wakes the worker. Only the first call has an effect. Thread-safe.
  void stop();

 private:
  enum State : std::int32_t { Armed = -1, StopRequested = 0 };

  std::atomic<bool> valid_{true};  ///< true until the first stop
  utilities::Mutex mutex_;
  utilities::Condition wake_;
  State state_ QEL_GUARDED_BY(mutex_) = Armed;
};

/// The sum of `now` and `interval`. Returns `now` if the interval is zero or less, and the largest
/// time of the clock if the sum exceeds the clock's range.
std::chrono::steady_clock::time_point deadlineAfter(std::chrono::steady_clock::time_point now,
                                                    std::chrono::duration<double> interval);

}  // namespace qel::util
