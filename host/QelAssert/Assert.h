#pragma once

#include <functional>
#include <string>

#include "host/QelAssert/AssertInfo.h"

namespace qel::assert {

/// What is done with a failed assertion. Must not throw. A worker may be given a copy of the
/// handler of the thread that starts it, so one handler may run on several threads at once.
using AssertHandler = std::function<void(const AssertInfo&)>;

/// The host's assertion facility: programming errors are reported here and execution goes on. Every
/// thread has a handler of its own; a thread that registered none has the default one, which logs
/// the record.
class Assert {
 public:
  /// Whether assertions are reported at all, in the whole process; callers ask before they build a
  /// record. On unless switched off.
  /// @{
  static bool isEnabled();
  static void setEnabled(bool enabled);
  /// @}

  /// Hands the record to the calling thread's handler, and returns when that has. Throws nothing,
  /// unless memory runs out.
  static void addAssert(const AssertInfo& info);

  /// The calling thread's handler, never empty.
  static AssertHandler getRegisteredForCurrentThread();

  /// "Assertion", "Precondition", "Postcondition", "Invariant"; "Unknown" for any other value.
  static std::string typeToString(AssertType type);
};

/// Registration of handlers that take one argument, the record.
class AssertFunctionOne {
 public:
  /// Makes `handler` the calling thread's handler; an empty one brings the default back.
  static void registerHandler(AssertHandler handler);
};

}  // namespace qel::assert
