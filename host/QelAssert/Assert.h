#pragma once

#include <functional>
#include <string>

#include "host/QelAssert/AssertInfo.h"

namespace qel::assert {

/// Handles a failed assertion. Must not throw. A worker may use a copy of the handler of the thread
/// that started it. So one handler may run on several threads at once.
using AssertHandler = std::function<void(const AssertInfo&)>;

/// The host's assertion facility. Code reports programming errors here and then continues. Every
/// thread has its own handler. A thread that has registered no handler uses the default handler,
/// which logs the record.
class Assert {
 public:
  /// Whether assertions are reported in this process; true by default. Callers check this before
  /// they build a record.
  /// @{
  static bool isEnabled();
  static void setEnabled(bool enabled);
  /// @}

  /// Calls the calling thread's handler with the record. Throws only `std::bad_alloc`.
  static void addAssert(const AssertInfo& info);

  /// The calling thread's handler; never empty.
  static AssertHandler getRegisteredForCurrentThread();

  /// "Assertion", "Precondition", "Postcondition", "Invariant"; "Unknown" for any other value.
  static std::string typeToString(AssertType type);
};

/// Registers handlers that accept one argument, the record.
class AssertFunctionOne {
 public:
  /// Makes `handler` the calling thread's handler. An empty handler restores the default handler.
  static void registerHandler(AssertHandler handler);
};

}  // namespace qel::assert
