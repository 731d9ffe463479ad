#include "tools/sample-host/Interruption.h"

#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>
#include <utility>

#include <unistd.h>

namespace qel::samplehost {
namespace {

struct Interruption {
  std::mutex mutex;
  std::condition_variable happened;
  bool hasHappened = false;  // guarded by mutex
};

// Never destroyed: the thread that waits for signals lives as long as the process.
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
    {
      const std::lock_guard lock(interruption().mutex);
      interruption().hasHappened = true;
    }
    interruption().happened.notify_all();
    reaction();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    for (;;) {
      pause();  // the only thread that the second signal can reach
    }
  }).detach();
}

bool isInterrupted() {
  const std::lock_guard lock(interruption().mutex);
  return interruption().hasHappened;
}

void waitUnlessInterrupted(std::chrono::duration<double> time) {
  std::unique_lock lock(interruption().mutex);
  interruption().happened.wait_for(lock, time, [] { return interruption().hasHappened; });
}

}  // namespace qel::samplehost
