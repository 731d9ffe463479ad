#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/QelSql/BusyWait.h"
#include "host/QelSql/Connection.h"
#include "host/QelSql/DatabaseLog.h"
#include "host/QelSql/Schema.h"

namespace qel::db::sql {

/// An open database file that has its schema, and is replaced when it is corrupt. Used by one
/// thread at a time.
///
/// Opening succeeds also while another connection holds the file. What could not be checked or
/// created then is made up for before the next statement.
class Database {
 public:
  /// Opens the file, or creates it. Throws `qel::exception`, naming the path and the reason, when
  /// the file can be neither opened nor replaced. `log` must outlive the database.
  Database(std::filesystem::path file, const DatabaseLog& log);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Adds a statement that creates a part of the schema (`Schema::isMadeBy`) and applies it.
  Outcome addToSchema(const std::string& statement);

  /// To be called outside a transaction, before statements are run: checks the file and applies
  /// what its schema lacks, also after replacing a corrupt file. On a thread with unlimited
  /// patience, a file that cannot shrink is also made to (`Schema::makeShrinkable`).
  Outcome prepare();

  /// Runs one statement.
  Outcome run(const std::string& statement);

  /// Ends the transaction under way, if there is one.
  void rollBack() noexcept;

  /// To be called outside a transaction: if a statement has found the file corrupt, sets it aside
  /// and begins a fresh one with the same schema. What cannot be done is tried again by `prepare`.
  void replaceIfCorrupt();

 private:
  void open();
  Outcome connect();
  Outcome tryToPrepare();
  Outcome check();
  Outcome applySchema();
  Outcome noted(Outcome outcome);
  void setAside(const std::string& reason);

  const std::filesystem::path file_;
  const DatabaseLog& log_;
  BusyWait busyWait_{log_};
  std::optional<Connection> connection_;  ///< none while a corrupt file cannot be replaced
  bool isChecked_ = false;                ///< the file was found sound
  bool isNew_ = false;                    ///< the file has nothing that a loss of power could take
  Schema schema_{file_, log_};
  std::optional<std::string> corruption_;  ///< why the file is to be replaced, if it is
  bool isOutOfReach_ = false;              ///< it was logged that the file cannot be replaced
};

}  // namespace qel::db::sql
