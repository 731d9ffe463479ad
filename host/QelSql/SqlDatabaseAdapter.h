#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/QelSql/SqlDatabaseInterface.h"

namespace qel::db::sql {

/// A SQLite database file.
///
/// Opening claims the file's directory for this process: the first object of the process in a
/// directory takes a lock file there ("Databases.lock"), the last one lets go of it. A new file is
/// created for its owner alone.
///
/// A file that SQLite finds corrupt is set aside with its journal under a dated name and reported,
/// and a fresh one is begun in its place: on opening, or later when a statement meets the damage.
/// So is a file of another program: one that holds something else under the name of a table that
/// "CREATE TABLE IF NOT EXISTS name (...)" is to create (in this form, without quotes around the
/// name or a semicolon), or that has tables but not "PRAGMA auto_vacuum = INCREMENTAL", which is to
/// be chosen first. That statement (with its whole transaction) fails; the fresh file is given
/// the tables that were created through this object. Where such a creation, or the choice of
/// `auto_vacuum`, fails for another reason, it is made up for before the next statement.
///
/// Another process may hold the file for a while (a virus scanner, a support tool): statements wait
/// until it is free and log a message after five seconds. The thread that opened the object waits
/// one second in all for other processes, since it is a thread of the host; its statements fail
/// when that is used up. Nobody waits beyond the exit deadline. Operations may be called from any
/// thread; one statement or transaction runs at a time. Rows that are committed survive a loss of
/// power. A transaction that fails is logged once, without the texts that were to be stored. A
/// detached thread may still use an object, and destroy it, while the process exits.
class SqlDatabaseAdapter : public SqlDatabaseInterface {
 public:
  /// Opens or creates the file, but writes nothing into it yet, since `auto_vacuum` can be chosen
  /// only for an empty one. Throws `qel::exception`, naming the path and the reason, when it
  /// cannot be opened, or when another process has claimed its directory.
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
