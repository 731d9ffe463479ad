#pragma once

#include <string>

#include "host/QelSql/Result.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::db::sql {

/// One SQL database in SQLite's dialect, used by several threads at once. The dialect includes
/// AUTOINCREMENT with `sqlite_sequence`, `PRAGMA auto_vacuum` and `incremental_vacuum`, `instr` and
/// `STRFTIME`; a table's name is one plain word. No operation throws for an SQL failure: results
/// carry it. `std::bad_alloc` may be thrown, and makes a transaction fail as a failed statement
/// does.
class SqlDatabaseInterface {
 public:
  virtual ~SqlDatabaseInterface() = default;

  /// Runs the one statement that `statement` holds to its end. An empty statement, text behind the
  /// statement (white space and semicolons apart) and NUL characters are refused, which is a
  /// failure like any other.
  virtual Result execute(const std::string& statement) = 0;

  /// Every row of the table, columns in table order.
  virtual Result selectAll(const std::string& table) = 0;

  /// Deletes the rows whose `ID` is in the comma-separated list (an empty list deletes nothing).
  virtual Result deleteIds(const std::string& table, const std::string& ids) = 0;

  /// Opens a transaction that ends when the guard is destroyed, on the same thread. The guard
  /// commits; once BEGIN or any statement inside has failed, later statements inside fail at once
  /// and the guard rolls back, so that the statements take effect together or not at all. Other
  /// threads' statements wait until then. A transaction begun inside another on the same thread
  /// joins it. The guard must not outlive the database.
  virtual ScopeGuard beginTransaction() = 0;
};

}  // namespace qel::db::sql
