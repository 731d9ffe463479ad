#pragma once

#include <string>

#include "host/QelHttp/Message.h"
#include "host/QelHttp/Response.h"
#include "host/QelUtilities/Exception.h"

namespace qel::protocol::https {

/// An exchange that failed, or that could not start. The error message describes the failure, and
/// names the server if the exchange started. It contains no secret.
class Error : public qel::exception {
 public:
  /// The kinds of failures that a caller may need to tell apart.
  enum class Cause { Other, Certificate };

  /// The cause is `Certificate` if the server's certificate or name was not trusted.
  explicit Error(const std::string& message, Cause cause = Cause::Other)
      : qel::exception(message), cause_(cause) {}

  /// The kind of the failure.
  Cause cause() const { return cause_; }

 private:
  Cause cause_;
};

/// Posts messages over HTTPS with TLS 1.2 or newer. Always verifies the peer's certificate and
/// name. Never follows redirects.
///
/// **Cost.** Cheap to construct, because a pool of the process keeps connections and trusted
/// certificates.
///
/// **Threads.** Only one thread at a time may use an object. Different objects may post at the same
/// time. Threads may still post while the process exits. Exchanges in flight are then ended, and
/// later exchanges fail.
class Client {
 public:
  Client() = default;
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  virtual ~Client() = default;

  /// Sends the message and waits for the response.
  ///
  /// Returns a status below 400 only if the exchange was completed and the whole body was sent.
  /// Returns a status of 400 or above even if it arrived earlier, and logs it with the server's
  /// name.
  ///
  /// Throws `Error` in all other cases:
  /// - a name that cannot be resolved,
  /// - a connection that is lost, or refused by the server or a proxy,
  /// - an untrusted certificate,
  /// - an exceeded time limit, exit deadline, or stop time of the thread (`utilities::Patience`),
  ///   even if the deadline or the stop time is set during the exchange,
  /// - a response that is too large,
  /// - a field of the message with an invalid value (see `Message`) or with CR, LF or NUL.
  ///
  /// If the server has closed a kept connection, the message is sent again over a new connection.
  /// So a server may receive the message twice.
  virtual http::Response post(const Message& message);
};

}  // namespace qel::protocol::https
