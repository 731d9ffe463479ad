#pragma once

#include <chrono>
#include <optional>

namespace qel::utilities {

/// Sets a deadline for every wait in this process. When it passes, exchanges with servers in flight
/// end within a fraction of a second, and statements stop waiting for a held database. Later waits
/// fail at once.
///
/// **Values.** A later call replaces the deadline. An empty value disarms it. Zero or less means
/// now.
///
/// **Use.** The host arms it just before it joins and releases what stores and sends. Any thread.
///
/// **At exit.** After the first HTTPS exchange, the end of the process arms the deadline with zero.
/// This may happen after static objects are destroyed. A host with a static client arms the
/// deadline before `exit`.
void setExitDeadline(std::optional<std::chrono::milliseconds> fromNow);

/// The deadline, or the clock's end while none is armed. Any thread, until the process ends. A
/// waiting thread reads it repeatedly, since the deadline may be armed meanwhile.
std::chrono::steady_clock::time_point exitDeadline();

/// An exit deadline where the host has armed none, such as for the release of a client.
class DefaultExitDeadline {
 public:
  DefaultExitDeadline() = default;
  DefaultExitDeadline(const DefaultExitDeadline&) = delete;
  DefaultExitDeadline& operator=(const DefaultExitDeadline&) = delete;
  /// Disarms the deadline that `arm` has armed, unless another one was armed since.
  ~DefaultExitDeadline();

  /// Does nothing when a deadline is armed. Any thread, once.
  void arm(std::chrono::milliseconds fromNow);

 private:
  std::chrono::steady_clock::time_point armed_ = std::chrono::steady_clock::time_point::max();
};

}  // namespace qel::utilities
