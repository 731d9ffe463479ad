#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "Core/Utilities/Assertions/FailedCheck.h"
#include "host/QelAssert/Assert.h"
#include "host/QelUtilities/TypeName.h"

namespace qel {

/// Registers listeners that implement the interface `T`, and notifies them.
///
/// **Ownership.** The broadcaster holds weak references. A listener that was destroyed is not
/// called.
///
/// **Threads.** Listeners must be registered and unregistered on one thread of the host. A listener
/// that is called on that thread may register or unregister itself and others. `notify` may be
/// called on any thread while no other thread registers or unregisters listeners, so that a
/// crashing thread can announce the crash.
template <typename T>
class Broadcaster {
 public:
  /// Appends the listener. A listener that is registered twice is called twice. A null listener is
  /// reported as an assertion failure, but is still appended.
  void registerListener(std::shared_ptr<T> listener) {
    if (!listener) {
      report(nullRegistered);
    }
    listeners_.push_back(std::move(listener));
  }

  /// Removes every entry of the listener and keeps the order of the rest. A listener that is null
  /// or not registered is reported as an assertion failure.
  void unregisterListener(const std::shared_ptr<T>& listener) {
    if (!listener) {
      report(nullUnregistered);
      return;
    }
    const auto removed = std::erase_if(
        listeners_, [&](const std::weak_ptr<T>& entry) { return entry.lock() == listener; });
    if (removed == 0) {
      report(strangerUnregistered);
    }
  }

  /// Calls `operation` with `arguments` on each listener that was registered when `notify` was
  /// called and is still alive, in the order of registration. A listener is kept alive only during
  /// its own call. An exception from a listener ends the notification and is passed on to the
  /// caller.
  template <typename Operation, typename... Arguments>
  void notify(Operation operation, const Arguments&... arguments) const {
    const auto snapshot = listeners_;
    for (const auto& entry : snapshot) {
      if (const auto listener = entry.lock()) {
        ((*listener).*operation)(arguments...);
      }
    }
  }

 private:
  static constexpr util::FailedCheck nullRegistered{"registerListener", 53,
                                                    "Trying to register a nullptr listener"};
  static constexpr util::FailedCheck nullUnregistered{
      "unregisterListener", 61, "Broadcaster::unregisterListener shouldn't be called with nullptr"};
  static constexpr util::FailedCheck strangerUnregistered{
      "unregisterListener", 69, "Trying to unregister a non registered listener"};

  static void report(const util::FailedCheck& failure) {
    if (!assert::Assert::isEnabled()) {
      return;
    }
    const auto name = "qel::Broadcaster<class " + utilities::typeName(typeid(T)) + '>';
    util::report({name, "Core/Utilities/Template/Broadcaster"}, failure);
  }

  std::vector<std::weak_ptr<T>> listeners_;
};

}  // namespace qel
