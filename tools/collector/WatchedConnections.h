#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <string>
#include <thread>

#include <openssl/ssl.h>

namespace qel::collector {

/// Limits on the time and on the bytes of a connection that occupies a worker.
struct ConnectionLimits {
  std::size_t connections = 64;  ///< the number of workers
  std::size_t headBytes = std::size_t{96} * 1024;
  std::chrono::seconds headTime{10};
  std::chrono::seconds bodyTime{60};
  /// The time from the start of a request's headers or body in which the connection is not cut,
  /// even if all workers are busy. Every `slowestBody` bytes of a known sender's body add a second.
  std::chrono::milliseconds patience{500};
  std::size_t slowestBody = std::size_t{64} * 1024;
  /// Time left to receive the body of a known sender once the server is stopping.
  std::chrono::seconds lastBodyTime{5};
};

enum class Sender { Unknown, Known };

class ConnectionWatch;

/// A connection that a worker serves.
struct WatchedConnection {
  enum class Phase { Head, BodyOfUnknown, BodyOfKnown, Answer, Cut };
  using Clock = std::chrono::steady_clock;

  ConnectionWatch& watch;
  SSL* ssl;
  int socket;
  std::thread::id worker;
  std::string peer;  ///< the remote address, as "address:port"
  bool encrypted = false;
  Phase phase = Phase::Head;
  Clock::time_point deadline{};
  Clock::time_point patienceEnd{};
  std::size_t headBytes = 0;
};

/// The connections of a server and their time limits. Not thread-safe.
class WatchedConnections {
 public:
  using Clock = WatchedConnection::Clock;

  explicit WatchedConnections(const ConnectionLimits& limits) : limits_(limits) {}

  /// Adds a connection that the calling thread serves, and starts waiting for its first request
  /// headers. The reference is valid until `remove` is called.
  WatchedConnection& add(ConnectionWatch& watch, SSL* ssl);
  /// Removes a connection. Logs it if it ended before its handshake was complete.
  void remove(const WatchedConnection& connection);
  WatchedConnection& ofThisWorker();
  bool isFull() const { return connections_.size() >= limits_.connections; }

  /// The phases of a request. See `ConnectionWatch`.
  /// @{
  void beginHead(WatchedConnection& connection);
  void beginBody(WatchedConnection& connection, Sender sender) const;
  static void beginAnswer(WatchedConnection& connection);
  /// @}
  /// Counts received bytes, and cuts the connection if its request headers are too large.
  void count(WatchedConnection& connection, std::size_t bytes) const;

  /// Cuts the connections whose deadline has passed. Returns the time at which to call it again.
  Clock::time_point cutLate(Clock::time_point now);
  /// If all workers are busy, cuts the connection whose patience expired first. Returns the time at
  /// which to call it again; `time_point::max()` while a worker is free.
  Clock::time_point makeRoom(Clock::time_point now);
  /// See `ConnectionWatch::stop`.
  void stop();

 private:
  const ConnectionLimits limits_;
  std::list<WatchedConnection> connections_;
  bool stopped_ = false;
};

}  // namespace qel::collector
