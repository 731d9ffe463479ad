#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "host/QelSql/BusyWait.h"
#include "host/QelSql/Result.h"

struct sqlite3;
struct sqlite3_stmt;

namespace qel::db::sql {

/// The outcome of a statement.
struct Outcome {
  /// `Busy` means that the database was in use for longer than the thread may wait.
  enum class Status { Done, Failed, Busy, FileIsCorrupt };

  Status status = Status::Done;
  std::string reason;            ///< SQLite's reason for a failure; may quote the statement
  std::string reasonToBeLogged;  ///< the same reason without text of the statement
  Result::Rows rows;             ///< rows of a statement that is done

  bool isDone() const { return status == Status::Done; }
};

/// An outcome whose reason may be logged.
Outcome failed(Outcome::Status status, const std::string& reason);

/// An open SQLite database file. Only one thread at a time may use an object.
class Connection {
 public:
  /// Opens the file, which must exist. `file` must be an absolute path. Reads and writes nothing
  /// yet. Throws `qel::exception` with the reason if the file cannot be opened for writing.
  /// `busyWait` must outlive the connection.
  Connection(std::filesystem::path file, BusyWait& busyWait);

  /// Reads the header and the schema, and compares the file's length with the header. This finds
  /// most corrupt files at low cost. An empty file is valid. Writes nothing, so that `auto_vacuum`
  /// can still be chosen for a new file.
  Outcome check();

  /// Runs one statement until it ends. Fails without running anything if the statement is empty,
  /// contains a NUL character, or is followed by text other than whitespace and semicolons.
  Outcome run(const std::string& statement);

  /// The ID of the last row that this connection inserted; 0 if it has inserted none.
  std::int64_t lastInsertedId() const;

  /// Rolls back the current transaction, if there is one. After some failures, SQLite has already
  /// ended the transaction.
  void rollBack() noexcept;
  /// Repeats a rollback that failed because memory ran out.
  void retryRollBack() noexcept;

 private:
  struct Close {
    void operator()(sqlite3* database) const;
  };

  Outcome prepareAndStep(const std::string& statement);
  Outcome stepToEnd(sqlite3_stmt& statement);
  Outcome failure() const;

  const std::filesystem::path file_;
  BusyWait& busyWait_;
  std::unique_ptr<sqlite3, Close> database_;
  bool hasToRollBack_ = false;
};

}  // namespace qel::db::sql
