#include "host/QelSql/DatabaseLock.h"

#include <chrono>

#include "host/QelUtilities/Patience.h"

namespace qel::db::sql {

using utilities::Patience;

bool DatabaseLock::lock() {
  std::unique_lock lock(mutex_);
  const auto self = std::this_thread::get_id();
  if (depth_ == 0 || owner_ != self) {
    const bool isFree = depth_ == 0 && queue_.empty();
    if (!isFree && !waitForTurn(lock)) {
      return false;
    }
    owner_ = self;
  }
  ++depth_;
  return true;
}

void DatabaseLock::unlock() {
  {
    const std::lock_guard lock(mutex_);
    if (--depth_ > 0) {
      return;
    }
  }
  changed_.notify_all();
}

bool DatabaseLock::waitForTurn(std::unique_lock<std::mutex>& lock) {
  const auto place = queue_.insert(queue_.end(), std::this_thread::get_id());
  const auto isMyTurn = [&] { return depth_ == 0 && queue_.begin() == place; };
  bool isTaken = true;
  if (const auto patience = Patience::left(); patience == Patience::unlimited) {
    changed_.wait(lock, isMyTurn);
  } else {
    const auto start = std::chrono::steady_clock::now();
    isTaken = changed_.wait_until(lock, start + patience, isMyTurn);
    Patience::spend(std::chrono::steady_clock::now() - start);
  }
  queue_.erase(place);
  if (!isTaken) {
    Patience::giveUp();
  }
  return isTaken;
}

}  // namespace qel::db::sql
