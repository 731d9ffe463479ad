#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace qel::test {

constexpr std::chrono::seconds hangingTest{30};  ///< longer than a test waits that does not hang

/// Waits for a condition that nothing announces. Whether it holds.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::seconds limit = hangingTest) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return condition();
}

/// Counts events on other threads. A test can wait for a count.
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

  /// Whether the count reaches `count` before a time that only a hanging test needs.
  bool reaches(int count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, hangingTest, [&] { return count_ >= count; });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  int count_ = 0;  ///< guarded by mutex_
};

}  // namespace qel::test
