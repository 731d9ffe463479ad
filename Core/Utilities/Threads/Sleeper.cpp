#include "Core/Utilities/Threads/Sleeper.h"

namespace qel::util {

using std::chrono::steady_clock;

Sleeper::Outcome Sleeper::sleepUntil(steady_clock::time_point deadline) {
  // A much longer single wait overflows in the time arithmetic of some runtimes.
  constexpr std::chrono::seconds longestWait{864'000};
  std::unique_lock lock(mutex_);
  while (state_ != StopRequested) {
    const auto now = steady_clock::now();
    if (now >= deadline) {
      return Outcome::TimedOut;
    }
    wake_.wait_until(lock, deadline - now > longestWait ? now + longestWait : deadline);
  }
  return Outcome::Stopped;
}

void Sleeper::stop() {
  if (!valid_.exchange(false)) {
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    state_ = StopRequested;
  }
  wake_.notify_one();
}

steady_clock::time_point deadlineAfter(steady_clock::time_point now,
                                       std::chrono::duration<double> interval) {
  if (!(interval.count() > 0)) {
    return now;
  }
  // The extra second keeps the conversion below from rounding beyond the range of the clock.
  const std::chrono::duration<double> left = steady_clock::time_point::max() - now;
  if (interval + std::chrono::seconds(1) >= left) {
    return steady_clock::time_point::max();
  }
  return now + std::chrono::duration_cast<steady_clock::duration>(interval);
}

}  // namespace qel::util
