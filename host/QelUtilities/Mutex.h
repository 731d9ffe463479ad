#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// Annotations that clang checks with -Wthread-safety, based on the example "mutex.h" in
// https://clang.llvm.org/docs/ThreadSafetyAnalysis.html. Clang does not check constructors,
// destructors and a lock's own operations. For other compilers the annotations are empty.
#ifdef __clang__
#define QEL_THREAD_ANNOTATION(annotation) __attribute__((annotation))
#else
#define QEL_THREAD_ANNOTATION(annotation)
#endif

/// A member that may be used only while the lock is held.
#define QEL_GUARDED_BY(lock) QEL_THREAD_ANNOTATION(guarded_by(lock))
/// A pointer to an object that may be used only while the lock is held.
#define QEL_PT_GUARDED_BY(lock) QEL_THREAD_ANNOTATION(pt_guarded_by(lock))
/// An operation whose caller must hold the lock.
#define QEL_REQUIRES(lock) QEL_THREAD_ANNOTATION(requires_capability(lock))
/// An operation that acquires, tries to acquire, or releases the lock (by default, this object).
/// @{
#define QEL_ACQUIRE(...) QEL_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define QEL_TRY_ACQUIRE(success) QEL_THREAD_ANNOTATION(try_acquire_capability(success))
#define QEL_RELEASE(...) QEL_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
/// @}
/// A class whose objects are locks.
#define QEL_CAPABILITY(name) QEL_THREAD_ANNOTATION(capability(name))
/// A class whose objects hold a lock as long as they exist.
#define QEL_SCOPED_CAPABILITY QEL_THREAD_ANNOTATION(scoped_lockable)
/// An operation that the analysis cannot follow. A comment gives the reason.
#define QEL_NO_THREAD_SAFETY_ANALYSIS QEL_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace qel::utilities {

/// A `std::mutex` that the annotations can name.
class QEL_CAPABILITY("mutex") Mutex {
 public:
  /// For cases that `MutexLock` does not support: one function locks and another unlocks.
  /// @{
  void lock() QEL_ACQUIRE() { mutex_.lock(); }
  void unlock() QEL_RELEASE() { mutex_.unlock(); }
  /// @}

 private:
  friend class MutexLock;
  std::mutex mutex_;
};

/// Holds a mutex as long as this object exists.
class QEL_SCOPED_CAPABILITY MutexLock {
 public:
  /// Locks the mutex. The destructor unlocks it.
  explicit MutexLock(Mutex& mutex) QEL_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  ~MutexLock() QEL_RELEASE() = default;

 private:
  friend class Condition;
  std::unique_lock<std::mutex> lock_;
};

/// Lets threads wait until a predicate is true. It is called with the mutex held: `[this]()
/// QEL_REQUIRES(mutex_) { return isDone_; }`.
class Condition {
 public:
  /// Wakes one waiting thread, or all of them.
  /// @{
  void notifyOne() { changed_.notify_one(); }
  void notifyAll() { changed_.notify_all(); }
  /// @}

  /// Waits until the predicate is true. `waitUntil` waits at most until the deadline, and returns
  /// whether the predicate is true.
  /// @{
  template <typename Predicate>
  void wait(MutexLock& lock, Predicate holds) {
    changed_.wait(lock.lock_, holds);
  }
  template <typename Predicate>
  bool waitUntil(MutexLock& lock, std::chrono::steady_clock::time_point deadline, Predicate holds) {
    return changed_.wait_until(lock.lock_, deadline, holds);
  }
  /// @}

 private:
  std::condition_variable changed_;
};

}  // namespace qel::utilities
