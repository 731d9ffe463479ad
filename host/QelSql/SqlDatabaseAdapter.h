#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/QelSql/SqlDatabaseInterface.h"

namespace qel::db::sql {

/// A SQLite database file.
///
/// **Opening** claims the file's directory for this process: the first object of the process in a
/// directory takes a lock file there ("Databases.lock"), the last one releases it. A new file is
/// created for its owner alone. Opening succeeds also while another process holds the file. The
/// file is then checked, and the schema created, before the next statement.
///
/// **Schema.** The object keeps the statements "PRAGMA auto_vacuum = INCREMENTAL" and "CREATE TABLE
/// IF NOT EXISTS name (...)", in this form and with a name without quotes. It applies them to every
/// file that it begins. An existing table is accepted if its first columns are those of the
/// statement, in their order, and further columns need no value.
///
/// **Damage.** If SQLite finds the file corrupt, or if something else has a table's name, a new
/// file begins. The old file and its journal are renamed with the date. The log says so. The
/// statement that finds the damage fails, with its whole transaction. IDs in the new file begin
/// above the highest known ID of the earlier file.
///
/// **Waiting.** Another process may hold the file, or another thread may use the object. A
/// statement waits as long as its thread's patience lasts (`utilities::Patience`; 0.25 s if the
/// thread has declared none), at most until the exit deadline. Then it fails.
///
/// **Threads.** Any thread may call. One statement or transaction runs at a time. A detached thread
/// may still use and destroy an object while the process exits.
///
/// **Failures.** Committed rows survive a loss of power. A failed transaction is logged once,
/// without the texts that it was to store.
class SqlDatabaseAdapter : public SqlDatabaseInterface {
 public:
  /// Opens or creates the file without a wait. Writes nothing yet, since `auto_vacuum` can be
  /// chosen only for an empty file. Throws `qel::exception`, which names the path and the reason,
  /// if the file cannot be opened, or if another process has claimed its directory.
  explicit SqlDatabaseAdapter(const std::filesystem::path& file);
  ~SqlDatabaseAdapter() override;

  Result execute(const std::string& statement) override;
  Result selectAll(const std::string& table) override;
  Result deleteIds(const std::string& table, const std::string& ids) override;
  ScopeGuard beginTransaction() override;

  SqlDatabaseAdapter(const SqlDatabaseAdapter&) = delete;
  SqlDatabaseAdapter& operator=(const SqlDatabaseAdapter&) = delete;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::db::sql
