#pragma once

#include <functional>
#include <string>

#include "host/QelAssert/AssertInfo.h"

namespace qel::assert {

/// Handles a failed assertion. Must not throw. A worker may use a copy of the handler of the thread
/// that starts it, so one handler may run on several threads at once.
using AssertHandler = std::function<void(const AssertInfo&)>;

/// The host's assertion facility: code reports programming errors here, and goes on. Every thread
/// has a handler of its own. A thread that registered none has the default handler, which logs the
/// record.
class Assert {
 public:
  /// Whether assertions are reported in this process. Callers ask before they build a record. On by
  /// default.
  /// @{
  static bool isEnabled();
  static void setEnabled(bool enabled);
  /// @}

  /// Calls the calling thread's handler with the record. Throws nothing except `std::bad_alloc`.
  static void addAssert(const AssertInfo& info);

  /// The calling thread's handler, never empty.
  static AssertHandler getRegisteredForCurrentThread();

  /// "Assertion", "Precondition", "Postcondition", "Invariant"; "Unknown" for any other value.
  static std::string typeToString(AssertType type);
};

/// Registers handlers that take one argument, the record.
class AssertFunctionOne {
 public:
  /// Makes `handler` the calling thread's handler. An empty one restores the default.
  static void registerHandler(AssertHandler handler);
};

}  // namespace qel::assert
