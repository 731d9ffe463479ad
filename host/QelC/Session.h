#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Client/Client.h"
#include "host/QelC/LossCountingDatabaseClient.h"
#include "host/QelC/Parameters.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::c {

/// A client with its databases, active from construction to destruction. Only one thread at a time
/// may use it, except where stated. The destructor sends what is stored, until the exit
/// deadline.
class Session {
 public:
  /// Sets the process's HTTPS connections up, too. `environment` may be empty. Throws if the
  /// directory cannot be used.
  Session(const Parameters& parameters, const std::string& environment);

  void startSending() { client_->startSendingItems(); }
  void stopSending() { client_->stopSendingItems(); }
  /// Ends sending for good, also an upload in progress. Thread-safe.
  void endSending() const { client_->endSending(); }
  /// Waits until everything is stored or lost. Throws `CallError` if nothing more is recorded, or
  /// if rows were lost since the last call.
  void waitUntilStored();
  /// Ends without sending and removes what was recorded. Throws `qel::exception` if a file remains.
  void withdraw();

  /// Throws `CallError` if nothing more is recorded. Thread-safe.
  void expectStorage() const;
  std::chrono::milliseconds releaseLimit() const { return releaseLimit_; }
  const std::shared_ptr<Callbacks>& callbacks() const { return callbacks_; }

 private:
  log::analytics::parameters::ActivateParameter activation(const Parameters& parameters,
                                                           const std::string& environment) const;

  const std::chrono::milliseconds releaseLimit_;
  const std::shared_ptr<Callbacks> callbacks_;
  LostRows lost_;                            ///< outlives the databases, which count there
  log::analytics::CipDatabases* databases_;  ///< owned by the client
  std::unique_ptr<log::analytics::Client> client_;
};

}  // namespace qel::c
