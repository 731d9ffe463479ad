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
/// created for its owner alone. Opening succeeds also while another process holds the file; what
/// could not be checked or created then is made up for before the next statement.
///
/// **Schema.** "PRAGMA auto_vacuum = INCREMENTAL" and "CREATE TABLE IF NOT EXISTS name (...)" (in
/// this form, without quotes around the name) are remembered, and applied to every file that this
/// object begins. A table that the file has already serves if its first columns are those of the
/// statement, in their order, and further ones need no value.
///
/// **Damage.** A file that SQLite finds corrupt, or that has something else under a table's name,
/// is set aside with its journal under a dated name and logged, and a fresh one is begun. The
/// statement that meets the damage fails, with its whole transaction. IDs in the fresh file begin
/// above the highest ID that is known of the file before.
///
/// **Waiting.** Another process may hold the file, or another thread use the object. A statement
/// waits as long as its thread's patience lasts (`utilities::Patience`; 0.25 s if the thread has
/// declared none) and no longer than until the exit deadline, then it fails.
///
/// **Threads.** Any thread may call; one statement or transaction runs at a time. A detached thread
/// may still use an object, and destroy it, while the process exits.
///
/// Rows that are committed survive a loss of power. A transaction that fails is logged once,
/// without the texts that were to be stored.
class SqlDatabaseAdapter : public SqlDatabaseInterface {
 public:
  /// Opens or creates the file and waits for nobody. Writes nothing into it yet, since
  /// `auto_vacuum` can be chosen only for an empty one. Throws `qel::exception`, naming the path
  /// and the reason, when it cannot be opened, or when another process has claimed its directory.
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
