#include "host/QelSql/DatabaseLock.h"

#include <chrono>

#include "host/QelUtilities/Patience.h"

namespace qel::db::sql {

using utilities::Patience;

bool DatabaseLock::lock() { return takeTurn(); }

void DatabaseLock::unlock() {
  if (leave()) {
    changed_.notifyAll();
  }
}

bool DatabaseLock::takeTurn() {
  utilities::MutexLock lock(mutex_);
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

/// Undoes one `lock`. Returns whether another thread may now acquire the lock.
bool DatabaseLock::leave() {
  const utilities::MutexLock lock(mutex_);
  return --depth_ == 0;
}

bool DatabaseLock::waitForTurn(utilities::MutexLock& lock) {
  const auto place = queue_.insert(queue_.end(), std::this_thread::get_id());
  const auto isMyTurn = [&]()
                            QEL_REQUIRES(mutex_) { return depth_ == 0 && queue_.begin() == place; };
  bool isTaken = true;
  if (const auto patience = Patience::left(); patience == Patience::unlimited) {
    changed_.wait(lock, isMyTurn);
  } else {
    const auto start = std::chrono::steady_clock::now();
    isTaken = changed_.waitUntil(lock, start + patience, isMyTurn);
    Patience::spend(std::chrono::steady_clock::now() - start);
  }
  queue_.erase(place);
  if (!isTaken) {
    Patience::giveUp();
  }
  return isTaken;
}

}  // namespace qel::db::sql
