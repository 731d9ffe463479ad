#pragma once

#include <memory>
#include <vector>

#include "host/QelHttp/Connection.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::protocol::https {

/// The idle connections of this process. When the process exits, the pool ends the exchanges in
/// flight and rejects new ones before the TLS library destroys its data. Thread-safe.
class ConnectionPool {
 public:
  static ConnectionPool& instance();

  /// Posts a message whose fields the caller has checked. Uses an idle connection with the same
  /// settings object, or a new connection. Throws `Error` if libcurl cannot be initialized.
  Outcome exchange(const Message& message, const std::shared_ptr<const Settings>& settings);

 private:
  ConnectionPool();

  [[nodiscard]] bool enter();  ///< returns false if the process is exiting
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
