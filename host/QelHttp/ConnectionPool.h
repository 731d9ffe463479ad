#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "host/QelHttp/Connection.h"

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

  std::mutex mutex_;
  std::condition_variable left_;
  int inFlight_ = 0;                               ///< guarded by mutex_
  bool ended_ = false;                             ///< guarded by mutex_
  std::vector<std::unique_ptr<Connection>> idle_;  ///< guarded by mutex_
};

}  // namespace qel::protocol::https
