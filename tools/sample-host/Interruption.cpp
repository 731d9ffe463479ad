#include "tools/sample-host/Interruption.h"

#include <utility>

#include "Core/Utilities/Threads/Sleeper.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::samplehost {
namespace {

class Interruption {
 public:
  bool happen(std::chrono::milliseconds exitDeadline) {
    const utilities::MutexLock lock(mutex_);
    if (std::exchange(hasHappened_, true)) {
      return false;
    }
    utilities::setExitDeadline(exitDeadline);
    happened_.notifyAll();
    return true;
  }

  void setExitDeadlineBefore(std::chrono::milliseconds exitDeadline) {
    const utilities::MutexLock lock(mutex_);
    if (!hasHappened_) {
      utilities::setExitDeadline(exitDeadline);
    }
  }

  bool hasHappened() {
    const utilities::MutexLock lock(mutex_);
    return hasHappened_;
  }

  void waitUntil(std::chrono::steady_clock::time_point deadline) {
    utilities::MutexLock lock(mutex_);
    happened_.waitUntil(lock, deadline, [this]() QEL_REQUIRES(mutex_) { return hasHappened_; });
  }

 private:
  utilities::Mutex mutex_;
  utilities::Condition happened_;
  bool hasHappened_ QEL_GUARDED_BY(mutex_) = false;
};

// Never destroyed, because the thread that waits for requests lives as long as the process.
Interruption& interruption() {
  static auto* const instance = new Interruption;
  return *instance;
}

}  // namespace

bool interrupt(std::chrono::milliseconds exitDeadline) {
  return interruption().happen(exitDeadline);
}

void setExitDeadlineUnlessInterrupted(std::chrono::milliseconds exitDeadline) {
  interruption().setExitDeadlineBefore(exitDeadline);
}

bool isInterrupted() { return interruption().hasHappened(); }

void waitUnlessInterrupted(std::chrono::duration<double> time) {
  interruption().waitUntil(util::deadlineAfter(std::chrono::steady_clock::now(), time));
}

}  // namespace qel::samplehost
