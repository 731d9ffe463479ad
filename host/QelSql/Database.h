#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/QelSql/BusyWait.h"
#include "host/QelSql/Connection.h"
#include "host/QelSql/DatabaseFile.h"
#include "host/QelSql/DatabaseLog.h"
#include "host/QelSql/Schema.h"

namespace qel::db::sql {

/// An open database file with its schema. A corrupt file is replaced. Only one thread at a time may
/// use an object.
///
/// Opening succeeds even if another connection has locked the file. The file is then checked, and
/// the schema is applied, before the next statement.
class Database {
 public:
  /// Opens the file, or creates it. Throws `qel::exception`, which names the path and the reason,
  /// if the file can neither be opened nor replaced. `log` must outlive the database.
  Database(std::filesystem::path file, const DatabaseLog& log);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Adds a statement that creates a part of the schema (`Schema::isMadeBy`) and applies the
  /// schema.
  Outcome addToSchema(const std::string& statement);

  /// Must be called before statements, outside a transaction. Checks the file, replaces a corrupt
  /// file, and applies the pending part of the schema. On a thread with unlimited patience, also
  /// makes the file shrinkable (`Schema::makeShrinkable`).
  Outcome prepare();

  /// Runs one statement.
  Outcome run(const std::string& statement);

  /// Rolls back the current transaction, if there is one.
  void rollBack() noexcept;

  /// Must be called outside a transaction. If a statement has found the file corrupt, sets the file
  /// aside (`sql::setAside`) and starts a new file with the same schema. If that fails, `prepare`
  /// tries again.
  void replaceIfCorrupt();

 private:
  void open();
  Outcome connect();
  Outcome tryToPrepare();
  Outcome check();
  Outcome applySchema();
  Outcome protectJournal();
  Outcome noted(Outcome outcome);
  void setAside(const std::string& reason);

  const std::filesystem::path file_;
  const DatabaseLog& log_;
  BusyWait busyWait_{log_};
  std::optional<Connection> connection_;  ///< empty while a corrupt file cannot be replaced
  bool isChecked_ = false;                ///< the file was found valid
  bool isNew_ = false;                    ///< the file has no data to lose
  bool isJournalProtected_ = journalHasRightsOfDatabase;
  Schema schema_{file_, log_};
  std::optional<std::string> corruption_;  ///< why the file must be replaced, if it must be
  bool isOutOfReach_ = false;              ///< the log has reported that replacing fails
};

}  // namespace qel::db::sql
