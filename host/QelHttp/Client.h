#pragma once

#include "host/QelHttp/Message.h"
#include "host/QelHttp/Response.h"
#include "host/QelUtilities/Exception.h"

namespace qel::protocol::https {

/// An exchange that did not come to a valid end. The message says what failed and to whom, and
/// holds no secret.
class Error : public qel::exception {
 public:
  using qel::exception::exception;
};

/// Posts over HTTPS: TLS 1.2 or newer, the peer's certificate and name always verified, redirects
/// never followed. Cheap to make: connections and the trusted certificates live in a process-wide
/// pool behind it. One object serves one thread at a time; several objects may post at once.
/// Threads may still post while the process exits: what is under way is ended then, and nothing new
/// begins.
class Client {
 public:
  Client() = default;
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  virtual ~Client() = default;

  /// Sends the message and waits for the answer. An answer below 400 is returned only when the
  /// exchange was completed and the whole body uploaded; one of 400 or above also when it came
  /// before that. Everything else throws `Error`: a name that cannot be resolved, a refused or lost
  /// connection, an untrusted certificate, a proxy that refuses, a time limit, an oversized answer,
  /// the exit deadline (also one that is armed meanwhile), a field of the message that is not what
  /// `Message` says or holds CR, LF or NUL. A kept connection that the server closed meanwhile is
  /// replaced and the message sent again, so a server may see it twice. A status of 400 or above is
  /// logged with the server's name.
  virtual http::Response post(const Message& message);
};

}  // namespace qel::protocol::https
