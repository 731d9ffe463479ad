#pragma once

#include <memory>
#include <string>

#include "host/QelHttp/Message.h"
#include "host/QelHttp/Settings.h"

namespace qel::protocol::https {

/// The result of an exchange, complete or not.
struct Outcome {
  /// Of the last answer that began; 0 without one. A status from 100 to 199 is not final.
  int status = 0;
  bool wholeBodySent = false;
  /// Why the exchange was not completed. Empty if it was.
  std::string failure;
};

/// Keeps for the next exchange: the open connection, the trusted certificates in memory, and the
/// resolved addresses. Keeps nothing of a message. All exchanges use the same settings. One thread
/// at a time.
class Connection {
 public:
  /// Throws `Error` when the transfer library cannot be set up.
  explicit Connection(std::shared_ptr<const Settings> settings);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  const std::shared_ptr<const Settings>& settings() const { return settings_; }

  /// Posts a message with checked fields. Blocks until the exchange ends, not noticeably longer
  /// than the time limits and the exit deadline, even if that is armed meanwhile.
  Outcome exchange(const Message& message);

  /// Frees the TLS library's data of the calling thread. Otherwise the library frees it at the end
  /// of the thread, when an exiting process may already have destroyed the library's own data.
  static void leaveThread();

 private:
  class Implementation;

  std::shared_ptr<const Settings> settings_;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::protocol::https
