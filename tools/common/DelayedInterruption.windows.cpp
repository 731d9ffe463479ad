#include "tools/common/DelayedInterruption.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

#include <windows.h>

#include "host/QelUtilities/Exception.h"

namespace qel::tools {
namespace {

struct Requests {
  std::recursive_mutex delay;
  std::mutex mutex;
  std::condition_variable comes;
  std::atomic<bool> waits = false;       ///< changed under `mutex`
  std::atomic<bool> isAnswered = false;  ///< whether the program ends by itself
};

// Never destroyed, because the system may call the handler below until the process ends.
Requests& requests() {
  static auto* const instance = new Requests;
  return *instance;
}

/// The system calls this function on a new thread, and then ends the process unless it
/// returns TRUE. The mutex stays locked, so that the program begins no further work that must not
/// be interrupted.
BOOL WINAPI waitForEndOfDelay(DWORD /*request*/) {
  {
    const std::lock_guard lock(requests().mutex);
    requests().waits = true;
    requests().comes.notify_all();
  }
  requests().delay.lock();
  return requests().isAnswered ? TRUE : FALSE;
}

}  // namespace

struct DelayedInterruption::State {
  std::unique_lock<std::recursive_mutex> delay{requests().delay};
};

DelayedInterruption::DelayedInterruption() : state_(std::make_unique<State>()) {
  [[maybe_unused]] static const BOOL isHandled = SetConsoleCtrlHandler(waitForEndOfDelay, TRUE);
}

DelayedInterruption::~DelayedInterruption() = default;

void DelayedInterruption::check() {
  if (requests().waits) {
    throw qel::exception("interrupted");
  }
}

bool DelayedInterruption::comesWithin(std::chrono::milliseconds time) {
  std::unique_lock lock(requests().mutex);
  requests().comes.wait_for(lock, time, [] { return requests().waits.load(); });
  requests().isAnswered = requests().waits.load();
  return requests().isAnswered;
}

}  // namespace qel::tools
