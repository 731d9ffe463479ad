#include "host/QelUtilities/Debugger.h"

#include <new>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <fstream>
#include <string>
#endif

#include "host/QelUtilities/Mutex.h"

namespace qel::utilities::debugger {
namespace {

class Hook {
 public:
  std::function<void()> get() {
    const MutexLock lock(mutex_);
    return function_;
  }

  void set(std::function<void()> function) {
    const MutexLock lock(mutex_);
    function_ = std::move(function);
  }

 private:
  Mutex mutex_;
  std::function<void()> function_ QEL_GUARDED_BY(mutex_);
};

// Never destroyed, because worker threads may still call `vBreak` while the process exits.
Hook& hook() {
  static auto* const instance = new Hook;
  return *instance;
}

#ifdef _WIN32
void breakIfDebugged() {
  if (IsDebuggerPresent()) {
    DebugBreak();
  }
}
#else
/// Linux reports the tracing process in /proc/self/status: see "TracerPid" in proc(5).
bool isDebuggerAttached() {
  std::ifstream status("/proc/self/status");
  const std::string key = "TracerPid:";
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(key)) {
      return line.find_first_of("123456789", key.size()) != std::string::npos;
    }
  }
  return false;
}

void breakIfDebugged() {
  if (isDebuggerAttached()) {
    std::raise(SIGTRAP);
  }
}
#endif

}  // namespace

void Debugger::vBreak() {
  try {
    if (const auto function = hook().get()) {
      function();
    }
    breakIfDebugged();
  } catch (const std::bad_alloc&) {
    // The caller is already handling a failure. On most threads, an exception would terminate the
    // process.
    return;
  }
}

void Debugger::setHook(std::function<void()> newHook) { hook().set(std::move(newHook)); }

}  // namespace qel::utilities::debugger
