#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <string>
#include <thread>

#include <openssl/ssl.h>

namespace qel::collector {

/// How long a connection may hold a worker, and with how many bytes.
struct ConnectionLimits {
  std::size_t connections = 64;  ///< as many as there are workers
  std::size_t headBytes = std::size_t{96} * 1024;
  std::chrono::seconds headTime{10};
  std::chrono::seconds bodyTime{60};
  /// While all workers are taken: the shortest time of a connection, and the bytes per second by
  /// which a known sender's body prolongs it.
  std::chrono::milliseconds patience{500};
  std::size_t slowestBody = std::size_t{64} * 1024;
  /// For a known sender's body, once the server stops.
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
  std::string peer;  ///< the other end, as "address:port"
  bool encrypted = false;
  Phase phase = Phase::Head;
  Clock::time_point deadline{};
  Clock::time_point patienceEnd{};
  std::size_t headBytes = 0;
};

/// The connections of a server, and when each of them is cut. Used by one thread at a time.
class WatchedConnections {
 public:
  using Clock = WatchedConnection::Clock;

  explicit WatchedConnections(const ConnectionLimits& limits) : limits_(limits) {}

  /// Adds a connection that the calling thread serves, and begins its first head. The reference is
  /// valid until `remove`.
  WatchedConnection& add(ConnectionWatch& watch, SSL* ssl);
  /// Logs a connection that ends before its handshake.
  void remove(const WatchedConnection& connection);
  WatchedConnection& ofThisWorker();
  bool isFull() const { return connections_.size() >= limits_.connections; }

  /// The phases of a request. See `ConnectionWatch`.
  /// @{
  void beginHead(WatchedConnection& connection);
  void beginBody(WatchedConnection& connection, Sender sender) const;
  static void beginAnswer(WatchedConnection& connection);
  /// @}
  /// Counts received bytes, and cuts the connection if a head is too large.
  void count(WatchedConnection& connection, std::size_t bytes) const;

  /// Cuts the connections whose time is over. Returns when the next deadline ends.
  Clock::time_point cutLate(Clock::time_point now);
  /// While all workers are taken, cuts the connection whose patience ended first. Returns when the
  /// next can make room; the clock's end while there is room.
  Clock::time_point makeRoom(Clock::time_point now);
  /// See `ConnectionWatch::stop`.
  void stop();

 private:
  const ConnectionLimits limits_;
  std::list<WatchedConnection> connections_;
  bool stopped_ = false;
};

}  // namespace qel::collector
