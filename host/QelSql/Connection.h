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

/// How a statement ended.
struct Outcome {
  /// Busy: the database was in use for longer than the thread may wait.
  enum class Status { Done, Failed, Busy, FileIsCorrupt };

  Status status = Status::Done;
  std::string reason;            ///< of a failure, in SQLite's words; may quote the statement
  std::string reasonToBeLogged;  ///< the same without text of the statement
  Result::Rows rows;             ///< of a statement that is done

  bool isDone() const { return status == Status::Done; }
};

/// An outcome with a reason that may be logged.
Outcome failed(Outcome::Status status, const std::string& reason);

/// An open SQLite database file. Used by one thread at a time.
class Connection {
 public:
  /// Opens the file, which must exist. `file` is absolute. Reads and writes nothing yet. Throws
  /// `qel::exception` with the reason if the file cannot be opened for writing. `busyWait` must
  /// outlive the connection.
  Connection(std::filesystem::path file, BusyWait& busyWait);

  /// Reads the header and the schema, and compares the file's length with the header. This finds
  /// most corrupt files at little cost. An empty file is valid. Writes nothing, so that
  /// `auto_vacuum` can still be chosen for a new file.
  Outcome check();

  /// Runs one statement to its end. Fails, without running anything, for an empty statement, for
  /// text after the statement other than white space and semicolons, and for NUL characters.
  Outcome run(const std::string& statement);

  /// The ID of the last row that this connection inserted; 0 before the first.
  std::int64_t lastInsertedId() const;

  /// Rolls back the transaction under way, if there is one. SQLite itself ends it after some
  /// failures.
  void rollBack() noexcept;

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
};

}  // namespace qel::db::sql
