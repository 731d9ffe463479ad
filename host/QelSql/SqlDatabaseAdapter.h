#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "host/QelSql/SqlDatabaseInterface.h"

namespace qel::db::sql {

/// A SQLite database file.
///
/// **Opening** claims the file's directory: it reserves the directory for this process. The first
/// object in a directory locks a file there ("Databases.lock"), and the last object releases the
/// lock. Only the owner may read and write a new file. Opening succeeds even if another process has
/// locked the database file. The file is then checked, and the schema is created, before the next
/// statement.
///
/// **Schema.** The object keeps the statements "PRAGMA auto_vacuum = INCREMENTAL" and "CREATE TABLE
/// IF NOT EXISTS name (...)". They must have this form and an unquoted name. The object applies
/// these statements to every new file. An existing table is accepted if its first columns are those
/// of the statement, in the same order. Extra columns must be nullable or have a default.
///
/// **Damage.** If SQLite finds the file corrupt, or if something else has a table's name, a new
/// file is started. The old file and its journal are set aside, which means renamed with the date.
/// The log reports this. The statement that finds the damage fails, with its whole transaction. IDs
/// in the new file start above the highest known ID of the old file.
///
/// **Waiting.** Another process may have locked the file, or another thread may use the object. A
/// statement waits as long as its thread's patience lasts (`utilities::Patience`; 0.25 s if the
/// thread has declared none). It waits at most until the exit deadline. If the wait was too short,
/// the statement fails.
///
/// **Threads.** Thread-safe. Only one statement or transaction runs at a time. A detached thread
/// may still use and destroy an object while the process exits.
///
/// **Failures.** Committed rows survive a loss of power. A failed transaction is logged once,
/// without the data that it was to store.
class SqlDatabaseAdapter : public SqlDatabaseInterface {
 public:
  /// Opens or creates the file without blocking. Writes nothing yet, because `auto_vacuum` can be
  /// chosen only for an empty file. Throws `qel::exception`, which names the path and the reason,
  /// if the file cannot be opened, or if another process has claimed its directory.
  explicit SqlDatabaseAdapter(const std::filesystem::path& file);
  ~SqlDatabaseAdapter() override;

  Result execute(const std::string& statement) override;
  Result selectAll(const std::string& table) override;
  Result deleteIds(const std::string& table, const std::string& ids) override;
  ScopeGuard beginTransaction() override;

  /// The number of transactions that the calling thread has committed, on all databases. A thread
  /// that compares it before and after a transaction learns whether the commit succeeded.
  static std::uint64_t committedByThisThread();

  SqlDatabaseAdapter(const SqlDatabaseAdapter&) = delete;
  SqlDatabaseAdapter& operator=(const SqlDatabaseAdapter&) = delete;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::db::sql
