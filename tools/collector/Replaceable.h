#pragma once

#include <utility>

#include "host/QelUtilities/Mutex.h"

namespace qel::collector {

/// A shared pointer that is replaced while other threads use its object. Thread-safe.
template <typename Pointer>
class Replaceable {
 public:
  explicit Replaceable(Pointer pointer) : pointer_(std::move(pointer)) {}

  Pointer get() const {
    const utilities::MutexLock lock(mutex_);
    return pointer_;
  }
  void replace(Pointer pointer) {
    const utilities::MutexLock lock(mutex_);
    pointer_.swap(pointer);
  }

 private:
  mutable utilities::Mutex mutex_;
  Pointer pointer_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::collector
