#include "host/QelUtilities/Debugger.h"

#include <mutex>
#include <new>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <fstream>
#include <string>
#endif

namespace qel::utilities::debugger {
namespace {

struct Hook {
  std::mutex mutex;
  std::function<void()> function;  // guarded by mutex
};

// Never destroyed: worker threads may still break while the process exits.
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
/// Linux tells the tracing process in /proc/self/status, see proc(5), "TracerPid".
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
    std::function<void()> function;
    {
      const std::lock_guard lock(hook().mutex);
      function = hook().function;
    }
    if (function) {
      function();
    }
    breakIfDebugged();
  } catch (const std::bad_alloc&) {
    // A failure is being handled here, mostly on a thread that an exception would end the process
    // from.
    return;
  }
}

void Debugger::setHook(std::function<void()> newHook) {
  const std::lock_guard lock(hook().mutex);
  hook().function = std::move(newHook);
}

}  // namespace qel::utilities::debugger
