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
  /// Busy: others used the database for longer than the thread may wait.
  enum class Status { Done, Failed, Busy, FileIsCorrupt };

  Status status = Status::Done;
  std::string reason;            ///< of a failure, in SQLite's words; may quote the statement
  std::string reasonToBeLogged;  ///< the same without anything that the statement holds
  Result::Rows rows;             ///< of a statement that is done

  bool isDone() const { return status == Status::Done; }
};

/// An outcome for a reason that quotes nothing.
Outcome failed(Outcome::Status status, const std::string& reason);

/// An open SQLite database file. Used by one thread at a time.
class Connection {
 public:
  /// Opens the file, which must exist; `file` is absolute. Nothing is read or written yet. Throws
  /// `qel::exception` with the reason when the file cannot be opened for writing. `busyWait` must
  /// outlive the connection.
  Connection(std::filesystem::path file, BusyWait& busyWait);

  /// Reads header and schema, and compares the file's length with what the header says, so that
  /// most corrupt files are found at little cost. An empty file is sound. Writes nothing, so that
  /// `auto_vacuum` can still be chosen for a new file.
  Outcome check();

  /// Runs the one statement that `statement` holds to its end. Refused, with nothing run, are an
  /// empty statement, text behind the statement other than white space and semicolons, and NUL
  /// characters.
  Outcome run(const std::string& statement);

  /// The ID of the last row that was inserted over this connection; 0 before the first.
  std::int64_t lastInsertedId() const;

  /// Ends the transaction under way, if there still is one (SQLite ends it by itself after some
  /// failures).
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
