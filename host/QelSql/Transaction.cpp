#include "host/QelSql/Transaction.h"

namespace qel::db::sql {

void Transaction::begin() {
  if (depth_ == 0) {
    reason_ = "out of memory";  // until another reason is known
  }
  ++depth_;
}

void Transaction::end() {
  if (--depth_ == 0) {
    failed_ = false;
  }
}

void Transaction::fail(const std::string& reason) {
  failed_ = true;
  reason_ = reason;
}

void RefusedTransactions::begin() {
  const utilities::MutexLock lock(mutex_);
  ++depths_[std::this_thread::get_id()];
}

void RefusedTransactions::end() noexcept {
  const utilities::MutexLock lock(mutex_);
  const auto depth = depths_.find(std::this_thread::get_id());
  if (--depth->second == 0) {
    depths_.erase(depth);
  }
}

bool RefusedTransactions::isUnderWay() const {
  const utilities::MutexLock lock(mutex_);
  return depths_.contains(std::this_thread::get_id());
}

}  // namespace qel::db::sql
