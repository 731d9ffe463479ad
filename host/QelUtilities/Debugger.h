#pragma once

#include <functional>

namespace qel::utilities::debugger {

/// Breaks into an attached debugger, so that a developer sees a failure where it happens.
class Debugger {
 public:
  /// Stops the process in the debugger when one is attached; otherwise only calls the hook, if one
  /// is set. Nothing at all when there is no memory for it. Never throws. Any thread.
  static void vBreak();

  /// Sets what every `vBreak` calls first, for a host (or a test) that wants to know. An empty hook
  /// removes it. Any thread; the hook itself runs on the breaking thread and must not throw.
  static void setHook(std::function<void()> hook);
};

}  // namespace qel::utilities::debugger
