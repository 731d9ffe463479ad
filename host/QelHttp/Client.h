#pragma once

#include "host/QelHttp/Message.h"
#include "host/QelHttp/Response.h"
#include "host/QelUtilities/Exception.h"

namespace qel::protocol::https {

/// An exchange that did not end validly. The message names the failure and the server, and no
/// secret.
class Error : public qel::exception {
 public:
  using qel::exception::exception;
};

/// Posts over HTTPS: TLS 1.2 or newer, the peer's certificate and name always verified, redirects
/// never followed.
///
/// **Cost.** Cheap to construct: a pool of the process keeps connections and trusted certificates.
///
/// **Threads.** One thread at a time uses an object. Several objects may post at once. Threads may
/// still post while the process exits: exchanges in flight then end, and later ones fail.
class Client {
 public:
  Client() = default;
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  virtual ~Client() = default;

  /// Sends the message and waits for the answer.
  ///
  /// Returns a status below 400 only if the exchange was completed and the whole body was sent.
  /// Returns a status of 400 or above also if it came earlier, and logs it with the server's name.
  ///
  /// Throws `Error` in all other cases:
  /// - a name that cannot be resolved, a refused or lost connection, a proxy that refuses,
  /// - an untrusted certificate,
  /// - a time limit, or the exit deadline, even if it is armed meanwhile,
  /// - an oversized answer,
  /// - a field of the message with an invalid value (see `Message`) or with CR, LF or NUL.
  ///
  /// If the server has closed a kept connection, the message is sent again over a new one. So a
  /// server may receive it twice.
  virtual http::Response post(const Message& message);
};

}  // namespace qel::protocol::https
