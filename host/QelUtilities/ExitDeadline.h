#pragma once

#include <chrono>
#include <optional>

namespace qel::utilities {

/// Sets a deadline for all waits of this process for the network and for locked databases. When the
/// deadline passes, exchanges in flight end within a fraction of a second, and statements stop
/// waiting. Later waits fail at once.
///
/// **Exception.** An exclusive claim of a directory, as made by `removeRecordings`, still waits for
/// the claims of this process. A customer's recordings can so be removed after the deadline.
///
/// **Values.** A later call replaces the deadline. An empty value removes the deadline. Zero or
/// less means now.
///
/// **Use.** The host should set the deadline just before it joins and releases the objects that
/// store and send items. Thread-safe.
///
/// **At exit.** If the process has made an HTTPS exchange, it sets the deadline to now when it
/// exits. This may happen after static objects are destroyed. So a host with a static client should
/// set the deadline before it calls `exit`.
void setExitDeadline(std::optional<std::chrono::milliseconds> fromNow);

/// The deadline, or `time_point::max()` if none is set. Thread-safe; may be called until the
/// process ends. A waiting thread must read the deadline repeatedly, because it may be set during
/// the wait.
std::chrono::steady_clock::time_point exitDeadline();

/// A temporary exit deadline for the case that the host has set none, for example while a client is
/// released. `arm` sets it.
class DefaultExitDeadline {
 public:
  DefaultExitDeadline() = default;
  DefaultExitDeadline(const DefaultExitDeadline&) = delete;
  DefaultExitDeadline& operator=(const DefaultExitDeadline&) = delete;
  /// Removes the deadline that `arm` has set, unless it was replaced since then.
  ~DefaultExitDeadline();

  /// Sets the deadline, unless a deadline is already set. May be called on any thread, but only
  /// once.
  void arm(std::chrono::milliseconds fromNow);

 private:
  std::chrono::steady_clock::time_point armed_ = std::chrono::steady_clock::time_point::max();
};

}  // namespace qel::utilities
