#pragma once

#include <string>
#include <thread>

#include <openssl/ssl.h>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/WatchedConnections.h"

namespace qel::collector {

/// Cuts connections that hold a worker of the server without need. The HTTP library limits only the
/// time of each single read. A client that sends byte by byte could hold a worker for good, and
/// send a request's head of any size.
///
/// **Limits.** A request's head has a short time and a small number of bytes. The body of a request
/// with valid credentials then has a time of its own. While all workers are taken, the connection
/// whose patience ended first makes room. Each byte of a known sender's body prolongs its patience.
///
/// **Threads.** Callbacks of the TLS context report connections, on the workers' threads. A thread
/// of its own keeps the time. Any thread may call.
///
/// **Lifetime.** The watch must outlive every connection of the context that it watches.
///
/// It logs every connection that it cuts, and every one that ends before its TLS handshake.
class ConnectionWatch {
 public:
  explicit ConnectionWatch(const ConnectionLimits& limits);
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;
  ~ConnectionWatch();

  /// From now on watches the connections of this context. To be called once, before the first.
  void attachTo(SSL_CTX& context);

  /// The head of a request was read; its body may come.
  void admitBody(const SSL* ssl, Sender sender);
  /// The body was read. The client has no influence on the time until the answer.
  void awaitAnswer(const SSL* ssl);
  /// The request was answered; the connection waits for the next.
  void awaitHead(const SSL* ssl);

  /// The other end, as "address:port", of the connection that this worker serves.
  std::string peerOfThisWorker();

  /// Nothing more is read from the connection that this worker serves; the library then closes it.
  void endConnectionOfThisWorker();

  /// For a server that stops: cuts every connection at once, except those with a known sender's
  /// request under way. These are cut after their answer, or when their last time is over.
  void stop();

 private:
  struct Callbacks;

  void add(SSL* ssl);
  void noteEncryption(WatchedConnection& connection);
  void count(WatchedConnection& connection, std::size_t bytes);
  void remove(const WatchedConnection& connection);
  void wakeTimekeeper() QEL_REQUIRES(mutex_);
  void keepTime();

  utilities::Mutex mutex_;
  utilities::Condition wake_;
  WatchedConnections connections_ QEL_GUARDED_BY(mutex_);
  bool woken_ QEL_GUARDED_BY(mutex_) = false;
  bool ended_ QEL_GUARDED_BY(mutex_) = false;
  std::thread timekeeper_;
};

}  // namespace qel::collector
