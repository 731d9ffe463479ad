#include "tools/common/DelayedInterruption.h"

#include <atomic>
#include <mutex>

#include <windows.h>

#include "host/QelUtilities/Exception.h"

namespace qel::tools {
namespace {

struct Requests {
  std::recursive_mutex delay;
  std::atomic<bool> waits = false;
};

// Never destroyed, because the system may call the handler below until the process ends.
Requests& requests() {
  static auto* const instance = new Requests;
  return *instance;
}

/// The system calls this function on a new thread, and then ends the process. The mutex stays
/// locked, so that the program begins no further work that must not be interrupted.
BOOL WINAPI waitForEndOfDelay(DWORD /*request*/) {
  requests().waits = true;
  requests().delay.lock();
  return FALSE;
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

}  // namespace qel::tools
