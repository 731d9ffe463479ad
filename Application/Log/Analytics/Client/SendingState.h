#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

#include "Application/Log/Analytics/Client/SendingStatus.h"
#include "host/QelUtilities/Mutex.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics::details {

/// What a client and its sending passes share: the results so far, and whether sending has ended
/// for good. Thread-safe.
class SendingState {
 public:
  /// Ends sending for good. The pass in progress ends at once, and no package is sent afterwards.
  void end() { stopTime_ = std::chrono::steady_clock::now(); }
  bool hasEnded() const { return stopTime_.load() != utilities::Patience::neverStop; }
  /// The stop time for the patience of a pass.
  const utilities::Patience::StopTime& stopTime() const { return stopTime_; }

  void recordAcceptance(std::size_t rows) {
    const utilities::MutexLock lock(mutex_);
    status_.lastAccepted = std::chrono::system_clock::now();
    status_.rowsAccepted += rows;
  }

  void recordFailure(std::string reason) {
    const utilities::MutexLock lock(mutex_);
    status_.lastFailure = {std::chrono::system_clock::now(), std::move(reason)};
  }

  /// The results so far. Does not know whether the loop runs.
  SendingStatus status() const {
    const utilities::MutexLock lock(mutex_);
    return status_;
  }

 private:
  utilities::Patience::StopTime stopTime_{utilities::Patience::neverStop};
  mutable utilities::Mutex mutex_;
  SendingStatus status_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::log::analytics::details
