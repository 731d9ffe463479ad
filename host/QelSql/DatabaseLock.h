#pragma once

#include <list>
#include <thread>

#include "host/QelUtilities/Mutex.h"

namespace qel::db::sql {

/// A recursive lock that lets one thread at a time use a database. Threads acquire the lock in the
/// order of their requests, and wait as long as their `utilities::Patience` lasts.
class QEL_CAPABILITY("database lock") DatabaseLock {
 public:
  /// Acquires the lock, even if the calling thread already has it. Returns false if the thread's
  /// patience ended first.
  bool lock() QEL_TRY_ACQUIRE(true);
  /// Undoes one `lock` that returned true.
  void unlock() QEL_RELEASE();

 private:
  bool takeTurn();
  bool waitForTurn(utilities::MutexLock& lock) QEL_REQUIRES(mutex_);
  bool leave();

  utilities::Mutex mutex_;
  utilities::Condition changed_;
  /// The thread that has the lock. Valid while `depth_` is not zero.
  std::thread::id owner_ QEL_GUARDED_BY(mutex_);
  /// How often the owner has acquired the lock.
  int depth_ QEL_GUARDED_BY(mutex_) = 0;
  /// The threads that wait for the lock, in the order of their requests.
  std::list<std::thread::id> queue_ QEL_GUARDED_BY(mutex_);
};

/// Undoes one `lock` of its thread when it is destroyed.
class QEL_SCOPED_CAPABILITY DatabaseUnlock {
 public:
  explicit DatabaseUnlock(DatabaseLock& lock) QEL_REQUIRES(lock) : lock_(lock) {}
  DatabaseUnlock(const DatabaseUnlock&) = delete;
  DatabaseUnlock& operator=(const DatabaseUnlock&) = delete;
  ~DatabaseUnlock() QEL_RELEASE() { lock_.unlock(); }

 private:
  DatabaseLock& lock_;
};

}  // namespace qel::db::sql
