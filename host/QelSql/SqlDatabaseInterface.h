#pragma once

#include <string>

#include "host/QelSql/Result.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::db::sql {

/// One SQL database, used by several threads at once. No operation throws for an SQL failure:
/// results carry it.
class SqlDatabaseInterface {
 public:
  virtual ~SqlDatabaseInterface() = default;

  /// Runs the one statement that `statement` holds to its end. An empty statement, text behind the
  /// statement (white space and semicolons apart) and NUL characters are refused.
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
