#pragma once

#include <chrono>

#include "host/QelSql/DatabaseLog.h"

namespace qel::db::sql {

/// How statements wait while another connection holds the database file: as long as the patience of
/// their thread lasts (`utilities::Patience`), and no longer than until the exit deadline
/// (`utilities::setExitDeadline`). Logs when a wait grows long, and when it is over. Used by one
/// thread at a time.
class BusyWait {
 public:
  /// `log` must outlive this object.
  explicit BusyWait(const DatabaseLog& log) : log_(log) {}

  /// Sleeps until the file is worth another try. False when this thread has waited long enough.
  /// Called from inside SQLite, which no exception may pass through.
  bool waitAgain() noexcept;

  /// The statement that may have waited is over.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  const DatabaseLog& log_;
  Clock::duration waited_{};  ///< by the statement under way
  Clock::duration pause_ = shortestPause;
  bool reported_ = false;

  static constexpr Clock::duration shortestPause = std::chrono::milliseconds(1);
};

}  // namespace qel::db::sql
