#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/collector/SqliteConnection.h"

namespace qel::collector {

/// A transaction. The destructor rolls it back unless it was committed.
class SqliteTransaction {
 public:
  explicit SqliteTransaction(SqliteConnection& connection, const char* kind = "IMMEDIATE");
  SqliteTransaction(const SqliteTransaction&) = delete;
  SqliteTransaction& operator=(const SqliteTransaction&) = delete;
  ~SqliteTransaction();

  void commit();

 private:
  SqliteConnection& connection_;
};

/// One execution of a prepared statement. Parameters are bound in their order; a bound text must
/// exist until the end of the execution.
class SqliteExecution {
 public:
  SqliteExecution(SqliteConnection& connection, const SqliteStatement& statement)
      : connection_(connection), statement_(statement.get()) {}
  SqliteExecution(const SqliteExecution&) = delete;
  SqliteExecution& operator=(const SqliteExecution&) = delete;
  ~SqliteExecution();

  SqliteExecution& bindNumber(std::int64_t value);
  SqliteExecution& bindText(std::string_view text);
  SqliteExecution& bindBlob(std::string_view bytes);
  SqliteExecution& bindNull();

  /// Returns whether there is a row.
  bool step();
  std::int64_t number(int column) const;
  /// The first values of the remaining rows.
  std::vector<std::int64_t> numbers();
  /// Empty for NULL. Valid until the next step.
  std::string_view text(int column) const;

 private:
  SqliteExecution& check(int result);

  SqliteConnection& connection_;
  sqlite3_stmt* const statement_;
  int parameters_ = 0;
};

}  // namespace qel::collector
