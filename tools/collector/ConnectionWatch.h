#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <thread>

#include <openssl/ssl.h>

namespace qel::collector {

/// Cuts connections that hold a worker of the server without need. The HTTP library limits the
/// time of each single read only, so a client that drips its bytes could hold one for good, and it
/// takes a request's head of any size.
///
/// A connection has a short time and a small number of bytes to come up with a request's head. The
/// body of a request with valid credentials then has a time of its own. While all workers are
/// taken, the connection whose patience ended first makes room: nobody's lasts long, but each byte
/// of such a body prolongs its own.
///
/// It learns of connections through callbacks of the TLS context, on the workers' threads; its own
/// thread keeps the time. It logs whom it cuts, and who comes to no TLS connection. It must outlive
/// every connection of the context that it watches.
class ConnectionWatch {
 public:
  struct Limits {
    std::size_t connections = 64;  ///< as many as there are workers
    std::size_t headBytes = std::size_t{96} * 1024;
    std::chrono::seconds headTime{10};
    std::chrono::seconds bodyTime{60};
    /// While all workers are taken: how long each has at least, and the bytes per second that a
    /// known sender's body must come with beyond that.
    std::chrono::milliseconds patience{500};
    std::size_t slowestBody = std::size_t{64} * 1024;
    /// For a known sender's body, once the server is to stop.
    std::chrono::seconds lastBodyTime{5};
  };

  enum class Sender { Unknown, Known };

  explicit ConnectionWatch(const Limits& limits);
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;
  ~ConnectionWatch();

  /// From now on watches the connections of this context, once, before the first of them.
  void attachTo(SSL_CTX& context);

  /// The head of a request was read; its body may come.
  void admitBody(const SSL* ssl, Sender sender);
  /// The body was read; what the answer takes is not the client's fault.
  void awaitAnswer(const SSL* ssl);
  /// The request was answered; the connection waits for the next.
  void awaitHead(const SSL* ssl);

  /// The other end, as "address:port", of the connection that this worker serves.
  std::string peerOfThisWorker();

  /// Nothing more is read from the connection that this worker serves; the library then closes it.
  void endConnectionOfThisWorker();

  /// Cuts every connection but those with a known sender's request under way, and these after
  /// that or when their last time is over, so that a server that is to stop need not wait for them.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;
  enum class Phase { Head, BodyOfUnknown, BodyOfKnown, Answer, Cut };
  struct Connection {
    ConnectionWatch* watch = nullptr;
    SSL* ssl = nullptr;
    int socket = -1;
    std::thread::id worker;
    std::string peer;
    bool encrypted = false;
    Phase phase = Phase::Head;
    Clock::time_point deadline;
    Clock::time_point patienceEnd;
    std::size_t headBytes = 0;
  };

  static int connectionIndex();
  static void onProgress(const SSL* ssl, int where, int result);
  static void onRecord(int outgoing, int version, int type, const void* data, std::size_t size,
                       SSL* ssl, void* argument);
  static void onFree(void* parent, void* connection, CRYPTO_EX_DATA* data, int index, long number,
                     void* argument);

  static void cut(Connection& connection, const std::string& reason);
  static Connection& find(const SSL* ssl);
  Connection& findOfThisWorker();
  void add(SSL* ssl);
  void beginHead(Connection& connection);
  void count(Connection& connection, std::size_t bytes) const;
  Clock::time_point cutLate(Clock::time_point now);
  Clock::time_point makeRoom(Clock::time_point now);
  void keepTime();

  const Limits limits_;
  std::mutex mutex_;
  std::condition_variable wake_;
  // Guarded by mutex_.
  std::list<Connection> connections_;
  bool stopped_ = false;
  bool ended_ = false;

  std::thread timekeeper_;
};

}  // namespace qel::collector
