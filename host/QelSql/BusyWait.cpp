#include "host/QelSql/BusyWait.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

#include "host/QelUtilities/ExitDeadline.h"

namespace qel::db::sql {
namespace {

constexpr std::chrono::milliseconds longestPause{50};
constexpr std::chrono::seconds longWait{5};

/// Unlike a `std::thread::id` this is never given to another thread later.
std::uint64_t numberOfThisThread() {
  static std::atomic<std::uint64_t> next{0};
  thread_local const std::uint64_t number = next++;
  return number;
}

}  // namespace

BusyWait::BusyWait(const std::string& quotedFile, std::shared_ptr<log::LoggerInterface> logger)
    : heldText_("database " + quotedFile + " is held by another process; waiting until it is free"),
      freeText_("database " + quotedFile + " is free again"),
      logger_(std::move(logger)),
      openingThread_(numberOfThisThread()) {}

bool BusyWait::waitAgain() noexcept {
  const bool onOpeningThread = numberOfThisThread() == openingThread_;
  const auto start = Clock::now();
  const auto mayWait = std::min(utilities::exitDeadline() - start,
                                onOpeningThread ? openingThreadMayWait_ : Clock::duration::max());
  if (mayWait <= Clock::duration::zero()) {
    return false;
  }
  std::this_thread::sleep_for(std::min(pause_, mayWait));
  const auto slept = Clock::now() - start;
  pause_ = std::min<Clock::duration>(2 * pause_, longestPause);
  waited_ += slept;
  if (onOpeningThread) {
    openingThreadMayWait_ -= slept;
  }
  if (!reported_ && waited_ >= longWait) {
    reported_ = true;
    logger_->log(log::Level::Warning, heldText_);
  }
  return true;
}

void BusyWait::end() {
  if (std::exchange(reported_, false)) {
    logger_->log(log::Level::Warning, freeText_);
  }
  waited_ = {};
  pause_ = shortestPause;
}

}  // namespace qel::db::sql
