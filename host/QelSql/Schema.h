#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/QelSql/Connection.h"
#include "host/QelSql/DatabaseLog.h"

namespace qel::db::sql {

/// The schema that a database file needs: the choice of `auto_vacuum`, and the tables.
///
/// The schema keeps its statements in the order of their addition, because `auto_vacuum` must be
/// chosen before the first table exists. Each statement is applied to the open file once. A
/// statement that fails stays pending. Only one thread at a time may use an object.
class Schema {
 public:
  /// `log` must outlive the schema.
  Schema(std::filesystem::path file, const DatabaseLog& log);

  /// Whether the statement creates a part of a schema: "CREATE TABLE IF NOT EXISTS name (...)",
  /// with an unquoted name, or "PRAGMA auto_vacuum = INCREMENTAL".
  static bool isMadeBy(std::string_view statement);

  /// Adds a statement for which `isMadeBy` is true, unless the schema already has it.
  void add(const std::string& statement);

  /// Applies the pending statements. An existing table is accepted if its first columns are those
  /// of the statement, in the same order and with the same key. Extra columns must be nullable or
  /// have a default. Anything else with the table's name makes the outcome `FileIsCorrupt`. Writes
  /// nothing to a file that already has the schema.
  Outcome apply(Connection& connection);

  /// Runs VACUUM on a file that was created without `auto_vacuum`, so that the file can shrink.
  /// Must be called outside a transaction, on a thread that may wait for a long time. A failure is
  /// logged. Later calls try again after ten minutes. The outcome is a failure only if the file is
  /// corrupt.
  Outcome makeShrinkable(Connection& connection);

  /// Records the ID of an inserted row.
  void noteId(std::int64_t id);

  /// Must be called when a new file replaces the earlier file. Makes every statement pending again.
  /// IDs in the new file start above the highest known ID of the earlier file. So a deletion by an
  /// ID of the earlier file deletes no row of the new file.
  void restart();

 private:
  using Clock = std::chrono::steady_clock;

  Outcome applyStatement(Connection& connection, const std::string& statement);
  Outcome createTable(Connection& connection, const std::string& statement);
  Outcome noteCounted(Connection& connection, const std::string& table);
  Outcome compare(Connection& connection, const std::string& statement);
  Outcome chooseVacuum(Connection& connection, const std::string& statement);
  Outcome keepIdsAbove(Connection& connection, std::int64_t id) const;
  bool hasRoomForVacuum() const;

  const std::filesystem::path file_;
  const DatabaseLog& log_;

  std::vector<std::string> statements_;
  std::size_t applied_ = 0;                 ///< how many statements are applied
  std::vector<std::string> countedTables_;  ///< applied tables with AUTOINCREMENT
  std::int64_t highestId_ = 0;
  std::int64_t idsBeginAbove_ = 0;
  bool cannotShrink_ = false;
  Clock::time_point nextVacuum_ = Clock::time_point::min();
};

}  // namespace qel::db::sql
