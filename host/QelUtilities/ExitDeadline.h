#pragma once

#include <chrono>
#include <optional>

namespace qel::utilities {

/// From `fromNow` on, nothing in this process waits for somebody else any longer, but for a
/// fraction of a second: an exchange with a server in flight is ended then, a statement stops
/// waiting for a database that another process holds, and what would wait later fails at once. The
/// host arms it just before it joins and releases what stores and sends. A later call replaces it,
/// an empty value disarms it, zero or less is now. Any thread. Once something was posted over
/// HTTPS, the end of the process arms it with nothing left, though perhaps not before static
/// objects are destroyed: a host that keeps its client in one arms it before `exit`.
void setExitDeadline(std::optional<std::chrono::milliseconds> fromNow);

/// The clock's end while no deadline is armed. Any thread, until the process ends. Whoever waits
/// asks again and again, since the deadline may be armed meanwhile.
std::chrono::steady_clock::time_point exitDeadline();

/// An exit deadline for a time in which the host has armed none, such as the release of a client.
class DefaultExitDeadline {
 public:
  DefaultExitDeadline() = default;
  DefaultExitDeadline(const DefaultExitDeadline&) = delete;
  DefaultExitDeadline& operator=(const DefaultExitDeadline&) = delete;
  /// Disarms what `arm` has armed, unless somebody has armed another one since.
  ~DefaultExitDeadline();

  /// Does nothing when a deadline is armed. Any thread, once.
  void arm(std::chrono::milliseconds fromNow);

 private:
  std::chrono::steady_clock::time_point armed_ = std::chrono::steady_clock::time_point::max();
};

}  // namespace qel::utilities
