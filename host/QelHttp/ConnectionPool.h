#pragma once

#include <memory>
#include <vector>

#include "host/QelHttp/Connection.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::protocol::https {

/// The connections of this process that wait for their next exchange. When the process exits, the
/// pool ends the exchanges in flight and lets no other begin, before the TLS library tears itself
/// down under them. Any thread.
class ConnectionPool {
 public:
  static ConnectionPool& instance();

  /// Posts a message whose fields have been checked, over a kept connection made under these very
  /// settings or over a new one. Throws `Error` when the transfer library cannot be set up.
  Outcome exchange(const Message& message, const std::shared_ptr<const Settings>& settings);

 private:
  ConnectionPool();

  [[nodiscard]] bool enter();  ///< false: the process exits
  void leave();
  void endAll();
  std::unique_ptr<Connection> take(const std::shared_ptr<const Settings>& settings);
  void keep(std::unique_ptr<Connection> connection);

  utilities::Mutex mutex_;
  utilities::Condition left_;
  int inFlight_ QEL_GUARDED_BY(mutex_) = 0;
  bool ended_ QEL_GUARDED_BY(mutex_) = false;
  std::vector<std::unique_ptr<Connection>> idle_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::protocol::https
