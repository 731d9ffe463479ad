#pragma once

#include <map>
#include <string>
#include <thread>

#include "host/QelUtilities/Mutex.h"

namespace qel::db::sql {

/// The transaction under way on a database, with the nested ones of the same thread. Used by the
/// thread that has the database's lock.
class Transaction {
 public:
  void begin();
  void end();
  bool isUnderWay() const { return depth_ > 0; }
  /// Whether no nested one is under way.
  bool isOutermost() const { return depth_ == 1; }

  /// Later statements do not run, and the end rolls back.
  void fail(const std::string& reason);
  bool hasFailed() const { return failed_; }
  const std::string& reason() const { return reason_; }

  /// During a step the transaction counts as failed, since the step may run out of memory.
  /// @{
  void beginStep() { failed_ = true; }
  void endStep() { failed_ = false; }
  /// @}

 private:
  int depth_ = 0;
  bool failed_ = false;
  std::string reason_;
};

/// The transactions that failed at their beginning, because their thread did not get the database's
/// lock. Until their end, statements of that thread do not run. Any thread.
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
