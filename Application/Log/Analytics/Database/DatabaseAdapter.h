#pragma once

#include <memory>

#include "Application/Log/Analytics/Database/DatabaseAdapterInterface.h"
#include "host/QelSql/SqlDatabaseInterface.h"

namespace qel::log::analytics::details {

/// Turns the storage of JSON rows into SQL statements.
///
/// Tables have the columns `ID` (assigned by SQLite) and `json`. Table names and session ids are
/// spliced into the statements as they are: callers pass fixed names, and ids without quotes. SQL
/// failures are not thrown; only failed deletions are logged. A row whose ID is no number makes a
/// reader throw what `std::stoi` throws. Takes no lock of its own.
class QEL_ANALYTICS_EXPORT DatabaseAdapter : public DatabaseAdapterInterface {
 public:
  /// Makes a new file give pages back incrementally, which must come before its first table.
  /// Without a database, statements fail silently; `getAll`, `deleteByIds` and `createTransaction`
  /// need one.
  explicit DatabaseAdapter(std::shared_ptr<qel::db::sql::SqlDatabaseInterface> db);

  void addTableIfNotExists(const std::string& table) override;
  /// An exception on the way is reported as an assertion and goes no further.
  void insert(const std::string& json, const std::string& table) override;
  std::map<int, std::string> getAll(const std::string& table) override;
  /// Rows whose text holds `"SessionId": "<sessionId>"`, spaced exactly so.
  std::map<int, std::string> getAllFromSession(const std::string& table,
                                               const std::string& sessionId) override;
  /// Also lets new IDs go on from the highest that is left, from 1 in an empty table.
  void deleteByIds(const std::vector<int>& ids, const std::string& table) override;
  void vacuum() override;
  ScopeGuard createTransaction() override;

 protected:
  /// Runs one statement. Without a database the result is a failure that says so.
  qel::db::sql::Result execute(const std::string& statement);
  /// Lets new IDs go on from the highest that is left, from 1 in an empty table.
  void resetIds(const std::string& table);

 private:
  void insertOrFail(const std::string& json, const std::string& table);

  std::shared_ptr<qel::db::sql::SqlDatabaseInterface> db_;
};

}  // namespace qel::log::analytics::details
