#pragma once

#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

namespace qel::db::sql {

/// Lets one thread at a time use a database. Threads take turns in the order in which they came,
/// and wait as long as their `utilities::Patience` lasts.
class DatabaseLock {
 public:
  /// Takes the lock, again if this thread has it. False when the thread's patience ended first.
  bool lock();
  /// Undoes one `lock` that returned true.
  void unlock();

 private:
  bool waitForTurn(std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::thread::id owner_;             ///< guarded by mutex_; counts while depth_ is not zero
  int depth_ = 0;                     ///< guarded by mutex_; how often the owner has the lock
  std::list<std::thread::id> queue_;  ///< guarded by mutex_; the threads that wait
};

}  // namespace qel::db::sql
