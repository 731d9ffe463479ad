#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace qel::log::analytics {

/// How sending goes, for a status page or a support case. See `Client::sendingStatus`.
struct SendingStatus {
  /// A package that the server did not accept, or a pass that failed.
  struct Failure {
    std::chrono::system_clock::time_point time;  ///< when it was noticed
    std::string reason;                          ///< for people; never contains the secret
  };

  /// When the server accepted the last package; empty if there was none.
  std::optional<std::chrono::system_clock::time_point> lastAccepted;
  /// The number of rows that the server has accepted since the client was activated.
  std::uint64_t rowsAccepted = 0;
  /// The last failure. A later success does not remove it, so compare its time with `lastAccepted`.
  std::optional<Failure> lastFailure;
  /// Whether the sending loop runs. It ends after `Client::stopSendingItems`, once the last pass is
  /// done, and when passes fail.
  bool isLoopRunning = false;
};

}  // namespace qel::log::analytics
