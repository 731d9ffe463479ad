#include "tools/sample-host/Interruption.h"

#include <csignal>
#include <thread>
#include <utility>

#include <unistd.h>

#include "Core/Utilities/Threads/Sleeper.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::samplehost {
namespace {

class Interruption {
 public:
  void happen() {
    const utilities::MutexLock lock(mutex_);
    hasHappened_ = true;
    happened_.notifyAll();
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

// Never destroyed, because the thread that waits for signals lives as long as the process.
Interruption& interruption() {
  static auto* const instance = new Interruption;
  return *instance;
}

}  // namespace

void catchInterruptions(std::function<void()> reaction) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([signals, reaction = std::move(reaction)] {
    int signal = 0;
    sigwait(&signals, &signal);
    interruption().happen();
    reaction();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    for (;;) {
      pause();  // the only thread that the second signal can reach
    }
  }).detach();
}

bool isInterrupted() { return interruption().hasHappened(); }

void waitUnlessInterrupted(std::chrono::duration<double> time) {
  interruption().waitUntil(util::deadlineAfter(std::chrono::steady_clock::now(), time));
}

}  // namespace qel::samplehost
