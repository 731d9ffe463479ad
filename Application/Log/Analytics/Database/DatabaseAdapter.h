#pragma once

#include <memory>

#include "Application/Log/Analytics/Database/DatabaseAdapterInterface.h"
#include "host/QelSql/SqlDatabaseInterface.h"

namespace qel::log::analytics::details {

/// Stores JSON rows with SQL statements.
///
/// **Statements.** Tables have the columns `ID` (assigned by SQLite) and `json`. Table names and
/// session ids become part of statements without escaping, so callers must pass fixed names, and
/// ids without quotes.
///
/// **Errors.** SQL failures do not throw, and only failed deletions are logged. Reading a row whose
/// ID is not a number throws the exceptions of `std::stoi`.
///
/// **Threads.** The adapter locks nothing, so it is as thread-safe as its SQL database.
class QEL_ANALYTICS_EXPORT DatabaseAdapter : public DatabaseAdapterInterface {
 public:
  /// Enables incremental vacuum in a new file, which is possible only before the first table is
  /// created. If `db` is null, statements fail silently, and `getAll`, `deleteByIds` and
  /// `createTransaction` must not be called.
  explicit DatabaseAdapter(std::shared_ptr<qel::db::sql::SqlDatabaseInterface> db);

  void addTableIfNotExists(const std::string& table) override;
  /// An exception is reported as an assertion failure and is not passed on.
  void insert(const std::string& json, const std::string& table) override;
  std::map<int, std::string> getAll(const std::string& table) override;
  /// The rows whose JSON text contains `"SessionId": "<sessionId>"` with exactly this spacing.
  std::map<int, std::string> getAllFromSession(const std::string& table,
                                               const std::string& sessionId) override;
  /// Also resets the next ID to one above the highest remaining ID, or to 1 in an empty table.
  void deleteByIds(const std::vector<int>& ids, const std::string& table) override;
  void vacuum() override;
  ScopeGuard createTransaction() override;

 protected:
  /// Runs one statement. If there is no database, returns a failure with a message.
  qel::db::sql::Result execute(const std::string& statement);
  /// Resets the next ID to one above the highest remaining ID, or to 1 in an empty table.
  void resetIds(const std::string& table);

 private:
  void insertOrFail(const std::string& json, const std::string& table);

  std::shared_ptr<qel::db::sql::SqlDatabaseInterface> db_;
};

}  // namespace qel::log::analytics::details
