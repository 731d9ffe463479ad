#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "host/QelLog/LoggerInterface.h"

namespace qel::db::sql {

/// How statements wait while another process holds the database file: the thread that made this
/// object one second in all, other threads until the file is free, and none beyond the exit
/// deadline (`utilities::setExitDeadline`). A wait that grows long is reported, and so is its end.
/// Used by one thread at a time.
class BusyWait {
 public:
  BusyWait(const std::string& quotedFile, std::shared_ptr<log::LoggerInterface> logger);

  /// Sleeps until the file is worth another try. False when this thread has waited long enough.
  /// Called from inside SQLite, which no exception may pass through.
  bool waitAgain() noexcept;

  /// The statement that may have waited is over.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  const std::string heldText_;
  const std::string freeText_;
  const std::shared_ptr<log::LoggerInterface> logger_;
  const std::uint64_t openingThread_;

  Clock::duration openingThreadMayWait_ = std::chrono::seconds(1);
  Clock::duration waited_{};  ///< by the statement under way
  Clock::duration pause_ = shortestPause;
  bool reported_ = false;

  static constexpr Clock::duration shortestPause = std::chrono::milliseconds(1);
};

}  // namespace qel::db::sql
