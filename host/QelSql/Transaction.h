#pragma once

#include <map>
#include <string>
#include <thread>

#include "host/QelUtilities/Mutex.h"

namespace qel::db::sql {

/// The current transaction on a database, with the nested transactions of the same thread. Only the
/// thread that has the database's lock may use this object.
class Transaction {
 public:
  void begin();
  void end();
  bool isUnderWay() const { return depth_ > 0; }
  /// Whether no nested transaction is in progress.
  bool isOutermost() const { return depth_ == 1; }

  /// Marks the transaction as failed. Later statements do not run, and the transaction is rolled
  /// back when it ends.
  void fail(const std::string& reason);
  bool hasFailed() const { return failed_; }
  const std::string& reason() const { return reason_; }

  /// During a step the transaction counts as failed, because the step may run out of memory.
  /// @{
  void beginStep() { failed_ = true; }
  void endStep() { failed_ = false; }
  /// @}

 private:
  int depth_ = 0;
  bool failed_ = false;
  std::string reason_;
};

/// Transactions that failed to start because their thread could not acquire the database lock.
/// Until such a transaction ends, its thread's statements are skipped. Thread-safe.
class RefusedTransactions {
 public:
  void begin();
  void end() noexcept;
  /// Whether the calling thread has such a transaction.
  bool isUnderWay() const;

 private:
  mutable utilities::Mutex mutex_;
  std::map<std::thread::id, int> depths_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::db::sql
