#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace qel::test {

/// Counts what happens on other threads, and lets a test wait for it.
class Tally {
 public:
  void add() {
    const std::lock_guard lock(mutex_);
    ++count_;
    changed_.notify_all();
  }

  int count() const {
    const std::lock_guard lock(mutex_);
    return count_;
  }

  /// Whether the count reaches `count` before a limit that only a hanging program exceeds.
  bool reaches(int count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30), [&] { return count_ >= count; });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  int count_ = 0;  ///< guarded by mutex_
};

}  // namespace qel::test
