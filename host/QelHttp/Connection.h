#pragma once

#include <memory>
#include <string>

#include "host/QelHttp/Message.h"
#include "host/QelHttp/Settings.h"

namespace qel::protocol::https {

/// How an exchange went, as far as it went.
struct Outcome {
  /// Of the last answer that began; 0 when none did. Anything from 100 to 199 is no answer yet.
  int status = 0;
  bool wholeBodySent = false;
  /// What ended the exchange before it was completed; empty: nothing did.
  std::string failure;
};

/// What one exchange leaves for the next one: the open connection, the trusted certificates as they
/// were read, the addresses found. Nothing of a message stays in it. All its exchanges run under
/// the same settings. One thread at a time.
class Connection {
 public:
  /// Throws `Error` when the transfer library cannot be set up.
  explicit Connection(std::shared_ptr<const Settings> settings);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  const std::shared_ptr<const Settings>& settings() const { return settings_; }

  /// Posts a message whose fields have been checked. Blocks until the exchange is over, but not
  /// noticeably beyond the time limits and the exit deadline, even one that is armed meanwhile.
  Outcome exchange(const Message& message);

  /// Frees what the TLS library keeps for the calling thread. It would otherwise do so when the
  /// thread ends, which may be while an exiting process tears that library down.
  static void leaveThread();

 private:
  class Implementation;

  std::shared_ptr<const Settings> settings_;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::protocol::https
