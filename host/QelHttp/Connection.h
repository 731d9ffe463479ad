#pragma once

#include <memory>
#include <string>

#include "host/QelHttp/Message.h"
#include "host/QelHttp/Settings.h"

namespace qel::protocol::https {

/// The result of an exchange, whether it was completed or not.
struct Outcome {
  /// Status of the last response whose headers started to arrive; 0 if there was none. A status
  /// from 100 to 199 is not final.
  int status = 0;
  bool wholeBodySent = false;
  /// The reason why the exchange was not completed; empty if it was completed.
  std::string failure;
  /// Whether that reason is that the server's certificate or name was not trusted.
  bool isCertificateRejected = false;
};

/// A connection for several exchanges. For the next exchange it keeps the open socket, the trusted
/// certificates in memory, and the resolved addresses. It keeps no part of a message. All exchanges
/// use the same settings. Only one thread at a time may use an object.
class Connection {
 public:
  /// Throws `Error` if libcurl cannot be initialized.
  explicit Connection(std::shared_ptr<const Settings> settings);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  const std::shared_ptr<const Settings>& settings() const { return settings_; }

  /// Posts a message whose fields the caller has checked. Blocks until the exchange ends, at most
  /// slightly longer than the time limits, the exit deadline and the thread's stop time
  /// (`utilities::Patience`) allow. The last two may be set during the exchange.
  Outcome exchange(const Message& message);

  /// Frees the TLS library's thread-local state for the calling thread. Otherwise the library frees
  /// this state when the thread exits. By then, an exiting process may already have destroyed the
  /// library's own data.
  static void leaveThread();

 private:
  class Implementation;

  std::shared_ptr<const Settings> settings_;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::protocol::https
