#pragma once

#include <functional>

namespace qel::utilities::debugger {

/// Breaks into an attached debugger, so that a developer sees a failure where it happens.
class Debugger {
 public:
  /// Calls the hook, if one is set, and stops the process in the debugger, if one is attached. Does
  /// nothing without memory for it. Never throws. Any thread.
  static void vBreak();

  /// Sets a function that every `vBreak` calls first, for a host or a test that observes it. An
  /// empty function removes the hook. Any thread. The hook runs on the thread that calls `vBreak`,
  /// and must not throw.
  static void setHook(std::function<void()> hook);
};

}  // namespace qel::utilities::debugger
