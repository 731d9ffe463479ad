#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace qel::test {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr auto hangingTest = 30s;  ///< longer than a test waits that does not hang

inline steady_clock::duration timeOf(const std::function<void()>& call) {
  const auto begin = steady_clock::now();
  call();
  return steady_clock::now() - begin;
}

/// Waits for a condition that nothing announces. Whether it held once.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::seconds limit = hangingTest) {
  bool holds = condition();
  for (const auto end = steady_clock::now() + limit; !holds && steady_clock::now() < end;) {
    std::this_thread::sleep_for(1ms);
    holds = condition();
  }
  return holds;
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
