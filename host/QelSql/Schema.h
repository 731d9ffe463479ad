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
/// The schema keeps its statements in their order, since the choice must come before the first
/// table. Each statement is applied to the open file once. A statement that fails stays pending.
/// Used by one thread at a time.
class Schema {
 public:
  /// `log` must outlive the schema.
  Schema(std::filesystem::path file, const DatabaseLog& log);

  /// Whether the statement creates a part of a schema: "CREATE TABLE IF NOT EXISTS name (...)",
  /// with a name without quotes, or "PRAGMA auto_vacuum = INCREMENTAL".
  static bool isMadeBy(std::string_view statement);

  /// Adds such a statement, unless the schema has it.
  void add(const std::string& statement);

  /// Applies the pending statements. An existing table is accepted if its first columns are those
  /// of the statement, in their order and with the same key. Further columns must need no value.
  /// Anything else with the table's name makes the outcome `FileIsCorrupt`. Writes nothing to a
  /// file that has the schema.
  Outcome apply(Connection& connection);

  /// Runs VACUUM on a file that was created without `auto_vacuum`, so that it can shrink. Only for
  /// a thread that may wait for long, and outside a transaction. A failure is logged, and a retry
  /// follows after ten minutes. The outcome is a failure only for a corrupt file.
  Outcome makeShrinkable(Connection& connection);

  /// Notes the ID of an inserted row.
  void noteId(std::int64_t id);

  /// A new file replaces the earlier one: every statement is pending again. IDs in the new file
  /// begin above the highest known ID of the earlier file. So a deletion by an earlier ID deletes
  /// no newer row.
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
  std::size_t applied_ = 0;                 ///< how many of the statements
  std::vector<std::string> countedTables_;  ///< applied ones with AUTOINCREMENT
  std::int64_t highestId_ = 0;
  std::int64_t idsBeginAbove_ = 0;
  bool cannotShrink_ = false;
  Clock::time_point nextVacuum_ = Clock::time_point::min();
};

}  // namespace qel::db::sql
