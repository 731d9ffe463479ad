#pragma once

#include <string>

#include "host/QelSql/Result.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::db::sql {

/// An SQL database in SQLite's dialect, used by several threads at once.
///
/// **Dialect.** It includes AUTOINCREMENT with `sqlite_sequence`, `PRAGMA auto_vacuum` and
/// `incremental_vacuum`, `instr` and `STRFTIME`. A table's name is one plain word.
///
/// **Errors.** No operation throws for an SQL failure; results carry it. `std::bad_alloc` may be
/// thrown. It makes a transaction fail like a failed statement.
class SqlDatabaseInterface {
 public:
  virtual ~SqlDatabaseInterface() = default;

  /// Runs one statement to its end. Fails for an empty statement, for text after the statement
  /// other than white space and semicolons, and for NUL characters.
  virtual Result execute(const std::string& statement) = 0;

  /// Every row of the table, with its columns in table order.
  virtual Result selectAll(const std::string& table) = 0;

  /// Deletes the rows whose `ID` is in the comma-separated list. An empty list deletes nothing.
  virtual Result deleteIds(const std::string& table, const std::string& ids) = 0;

  /// Begins a transaction, which the destruction of the guard commits, on the same thread. After a
  /// failure of BEGIN or of a statement inside, later statements inside fail at once, and the guard
  /// rolls back. So the statements take effect together or not at all. Statements of other threads
  /// wait until the end. A transaction inside another one on the same thread joins it. The guard
  /// must not outlive the database.
  virtual ScopeGuard beginTransaction() = 0;
};

}  // namespace qel::db::sql
