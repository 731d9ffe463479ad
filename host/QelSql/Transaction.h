#pragma once

#include <map>
#include <string>
#include <thread>

#include "host/QelUtilities/Mutex.h"

namespace qel::db::sql {

/// The transaction under way on a database, with those that were begun inside it on the same
/// thread. Used by the thread that has the database's lock.
class Transaction {
 public:
  void begin();
  void end();
  bool isUnderWay() const { return depth_ > 0; }
  /// Whether none was begun inside it that has not ended.
  bool isOutermost() const { return depth_ == 1; }

  /// From now on its statements are not run, and its end rolls back.
  void fail(const std::string& reason);
  bool hasFailed() const { return failed_; }
  const std::string& reason() const { return reason_; }

  /// While a step may run out of memory the transaction counts as failed.
  /// @{
  void beginStep() { failed_ = true; }
  void endStep() { failed_ = false; }
  /// @}

 private:
  int depth_ = 0;
  bool failed_ = false;
  std::string reason_;
};

/// The transactions that failed at their beginning, since their thread could not have the
/// database's lock. Until their end, that thread's statements are not run. Any thread.
class RefusedTransactions {
 public:
  void begin();
  void end() noexcept;
  /// Whether the calling thread has one.
  bool isUnderWay() const;

 private:
  mutable utilities::Mutex mutex_;
  std::map<std::thread::id, int> depths_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::db::sql
