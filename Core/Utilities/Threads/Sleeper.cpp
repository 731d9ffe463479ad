#include "Core/Utilities/Threads/Sleeper.h"

#include <algorithm>

namespace qel::util {

using std::chrono::steady_clock;

Sleeper::Outcome Sleeper::sleepUntil(steady_clock::time_point deadline) {
  // A much longer wait overflows the time arithmetic of some runtimes.
  constexpr std::chrono::seconds longestWait{864'000};
  const auto isStopped = [this]() QEL_REQUIRES(mutex_) { return state_ == StopRequested; };
  utilities::MutexLock lock(mutex_);
  for (;;) {
    const auto end = std::min(deadline, steady_clock::now() + longestWait);
    if (wake_.waitUntil(lock, end, isStopped)) {
      return Outcome::Stopped;
    }
    if (end == deadline) {
      return Outcome::TimedOut;
    }
  }
}

void Sleeper::stop() {
  if (!valid_.exchange(false)) {
    return;
  }
  {
    const utilities::MutexLock lock(mutex_);
    state_ = StopRequested;
  }
  wake_.notifyOne();
}

steady_clock::time_point deadlineAfter(steady_clock::time_point now,
                                       std::chrono::duration<double> interval) {
  if (!(interval.count() > 0)) {
    return now;
  }
  // The extra second prevents the conversion below from rounding beyond the range of the clock.
  const std::chrono::duration<double> left = steady_clock::time_point::max() - now;
  if (interval + std::chrono::seconds(1) >= left) {
    return steady_clock::time_point::max();
  }
  return now + std::chrono::duration_cast<steady_clock::duration>(interval);
}

}  // namespace qel::util
