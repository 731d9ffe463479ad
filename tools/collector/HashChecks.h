#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "host/QelUtilities/Mutex.h"

namespace qel::collector {

/// The checks of hashed secrets that wait or run. An address may have only a few of them, so that
/// nobody keeps others from being checked. Thread-safe.
class HashChecks {
 public:
  /// Returns false if there are too many. Otherwise `end` must follow.
  bool begin(const std::string& address) {
    const utilities::MutexLock lock(mutex_);
    if (all_ == largest || byAddress_[address] == largestOfAddress) {
      return false;
    }
    ++all_;
    ++byAddress_[address];
    return true;
  }
  void end(const std::string& address) {
    const utilities::MutexLock lock(mutex_);
    --all_;
    if (--byAddress_[address] == 0) {
      byAddress_.erase(address);
    }
  }

 private:
  static constexpr std::size_t largest = 32;
  static constexpr std::size_t largestOfAddress = 2;

  utilities::Mutex mutex_;
  std::size_t all_ QEL_GUARDED_BY(mutex_) = 0;
  std::map<std::string, std::size_t> byAddress_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::collector
