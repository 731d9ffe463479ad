#pragma once

#include <chrono>

#include "host/QelSql/DatabaseLog.h"

namespace qel::db::sql {

/// The wait of a statement while another connection has locked the database file. It ends at the
/// latest when the thread's patience (`utilities::Patience`) ends or the exit deadline
/// (`utilities::setExitDeadline`) passes. The log reports a long wait, and later that the wait has
/// ended. Only one thread at a time may use an object.
class BusyWait {
 public:
  /// `log` must outlive this object.
  explicit BusyWait(const DatabaseLog& log) : log_(log) {}

  /// Sleeps until the next attempt. Returns false if the thread may wait no longer. Must not throw,
  /// because SQLite calls this function.
  bool waitAgain() noexcept;

  /// Ends the wait of a statement, if there was one.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  const DatabaseLog& log_;
  Clock::duration waited_{};  ///< how long the current statement has waited
  Clock::duration pause_ = shortestPause;
  bool reported_ = false;

  static constexpr Clock::duration shortestPause = std::chrono::milliseconds(1);
};

}  // namespace qel::db::sql
