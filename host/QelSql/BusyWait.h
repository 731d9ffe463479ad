#pragma once

#include <chrono>

#include "host/QelSql/DatabaseLog.h"

namespace qel::db::sql {

/// The wait of a statement while another connection holds the database file. It lasts at most as
/// long as the thread's patience (`utilities::Patience`), and until the exit deadline
/// (`utilities::setExitDeadline`). A long wait and its end are logged. Used by one thread at a
/// time.
class BusyWait {
 public:
  /// `log` must outlive this object.
  explicit BusyWait(const DatabaseLog& log) : log_(log) {}

  /// Sleeps until the next try. Returns false if the thread may wait no longer. SQLite calls it,
  /// and no exception may pass through SQLite.
  bool waitAgain() noexcept;

  /// Ends the wait of a statement, if there was one.
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
