#include "host/QelSql/BusyWait.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/Patience.h"

namespace qel::db::sql {
namespace {

using utilities::Patience;

constexpr std::chrono::milliseconds longestPause{50};
constexpr std::chrono::seconds longWait{5};

}  // namespace

bool BusyWait::waitAgain() noexcept {
  const auto start = Clock::now();
  const auto mayWait = std::min(utilities::exitDeadline() - start, Patience::left());
  if (mayWait <= Clock::duration::zero()) {
    reported_ = false;  // the file is still locked, so `end` must not report it as free
    Patience::giveUp();
    return false;
  }
  std::this_thread::sleep_for(std::min(pause_, mayWait));
  const auto slept = Clock::now() - start;
  Patience::spend(slept);
  pause_ = std::min<Clock::duration>(2 * pause_, longestPause);
  waited_ += slept;
  if (!reported_ && waited_ >= longWait) {
    reported_ = true;
    log_.warn(" is held by another connection; waiting until it is free");
  }
  return true;
}

void BusyWait::end() {
  if (std::exchange(reported_, false)) {
    log_.warn(" is free again");
  }
  waited_ = {};
  pause_ = shortestPause;
}

}  // namespace qel::db::sql
