#pragma once

#include <string>
#include <thread>

#include <openssl/ssl.h>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/WatchedConnections.h"

namespace qel::collector {

/// Cuts (shuts down) connections that occupy a worker of the server needlessly. The HTTP library
/// limits only the time of each read. Without the watch, a client that sends byte by byte could
/// occupy a worker forever, or send request headers of any size.
///
/// **Limits.** Request headers are limited in time and size. The body of a request with valid
/// credentials has a separate time limit. While all workers are busy, each connection keeps its
/// worker only for a short time, its patience. The connection whose patience expired first is cut.
/// Each byte of a known sender's body extends the patience of its connection.
///
/// **Threads.** Thread-safe. Callbacks of the TLS context report connections on the worker threads.
/// A dedicated thread enforces the time limits.
///
/// **Lifetime.** The watch must outlive every connection of the context that it watches.
///
/// **Log.** One line for each connection that is cut, and for each connection that ends before its
/// TLS handshake is complete.
class ConnectionWatch {
 public:
  explicit ConnectionWatch(const ConnectionLimits& limits);
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;
  ~ConnectionWatch();

  /// Starts to watch the connections of `context`. Must be called once, before the first
  /// connection.
  void attachTo(SSL_CTX& context);

  /// Must be called after the headers of a request have been read. Starts the time limit of a known
  /// sender's body.
  void admitBody(const SSL* ssl, Sender sender);
  /// Ends the limits of a request body. Must be called after the body has been read, because the
  /// client cannot influence the time until the answer.
  void awaitAnswer(const SSL* ssl);
  /// Starts the limits of the next request headers. Must be called after a request has been
  /// answered.
  void awaitHead(const SSL* ssl);

  /// The remote address, as "address:port", of the connection that the calling worker serves.
  std::string peerOfThisWorker();

  /// Stops reading from the connection that the calling worker serves, so that the HTTP library
  /// closes it.
  void endConnectionOfThisWorker();

  /// Must be called when the server stops. Cuts every connection at once, except connections with a
  /// known sender's request in progress. These are cut after their answer, or when
  /// `ConnectionLimits::lastBodyTime` has passed.
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
