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

/// What a database file must have before it is used: the choice of `auto_vacuum`, and its tables.
///
/// The statements that create these are kept, in their order, since a table that came before the
/// choice would rule that out for good. Each is applied to the open file once; one that fails
/// stays pending. Used by one thread at a time.
class Schema {
 public:
  /// `log` must outlive the schema.
  Schema(std::filesystem::path file, const DatabaseLog& log);

  /// Whether the statement creates a part of a schema: "CREATE TABLE IF NOT EXISTS name (...)", the
  /// name without quotes, or "PRAGMA auto_vacuum = INCREMENTAL".
  static bool isMadeBy(std::string_view statement);

  /// Adds such a statement unless it is known.
  void add(const std::string& statement);

  /// Applies what is pending. A table that the file has serves if its first columns are those of
  /// ours, in their order and with the same key, and if further ones need no value. Anything else
  /// under its name makes the outcome `FileIsCorrupt`. Writes nothing to a file that has the
  /// schema.
  Outcome apply(Connection& connection);

  /// Makes a file shrinkable that was created without `auto_vacuum`, by VACUUM, if that is due.
  /// Only for a thread that may wait for long, and outside a transaction. A failure is logged and
  /// tried again ten minutes later; only a corrupt file is an outcome.
  Outcome makeShrinkable(Connection& connection);

  /// Remembers the ID of an inserted row.
  void noteId(std::int64_t id);

  /// The file is a fresh one, in place of the one before: everything is pending. IDs in it begin
  /// above the highest ID that is known of the earlier file, so that a deletion by an earlier ID
  /// meets no newer row.
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
  std::size_t applied_ = 0;                 ///< so many of the statements
  std::vector<std::string> countedTables_;  ///< those that were applied and have AUTOINCREMENT
  std::int64_t highestId_ = 0;
  std::int64_t idsBeginAbove_ = 0;
  bool cannotShrink_ = false;
  Clock::time_point nextVacuum_ = Clock::time_point::min();
};

}  // namespace qel::db::sql
