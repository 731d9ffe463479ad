#pragma once

#include <string>

#include "host/QelSql/Result.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::db::sql {

/// An SQL database in SQLite's dialect. Thread-safe.
///
/// **Dialect.** The dialect includes AUTOINCREMENT with `sqlite_sequence`, `PRAGMA auto_vacuum` and
/// `incremental_vacuum`, `instr` and `STRFTIME`. A table's name must be one plain word.
///
/// **Errors.** No operation throws for an SQL failure; the result reports the failure. Operations
/// may throw `std::bad_alloc`. In a transaction, that exception has the same effect as a failed
/// statement.
class SqlDatabaseInterface {
 public:
  virtual ~SqlDatabaseInterface() = default;

  /// Runs one statement until it ends. Fails if the statement is empty, contains a NUL character,
  /// or is followed by text other than whitespace and semicolons.
  virtual Result execute(const std::string& statement) = 0;

  /// Every row of the table, with the columns in the table's order.
  virtual Result selectAll(const std::string& table) = 0;

  /// Deletes the rows whose `ID` is in the comma-separated list. An empty list deletes nothing.
  virtual Result deleteIds(const std::string& table, const std::string& ids) = 0;

  /// Begins a transaction, which the guard's destructor commits. The guard must be destroyed on the
  /// same thread, and must not outlive the database. If BEGIN or a statement in the transaction
  /// fails, later statements in it fail at once, and the guard rolls back. So the statements take
  /// effect together or not at all. Statements of other threads wait until the transaction ends. A
  /// nested transaction on the same thread joins the outer transaction.
  virtual ScopeGuard beginTransaction() = 0;
};

}  // namespace qel::db::sql
