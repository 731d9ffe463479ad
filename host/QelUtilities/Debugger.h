#pragma once

#include <functional>

namespace qel::utilities::debugger {

/// Breaks into an attached debugger, so that a developer sees a failure where it happens.
class Debugger {
 public:
  /// Calls the hook, if one is set, and breaks into the debugger, if one is attached. Does nothing
  /// if memory allocation fails. Never throws. Thread-safe.
  static void vBreak();

  /// Sets a function that every `vBreak` calls first, so that a host or a test can observe the
  /// call. An empty function removes the hook. The hook runs on the thread that calls `vBreak`, and
  /// must not throw. Thread-safe.
  static void setHook(std::function<void()> hook);
};

}  // namespace qel::utilities::debugger
