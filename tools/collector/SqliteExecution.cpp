#include "tools/collector/SqliteExecution.h"

#include <string>

#include <sqlite3.h>

namespace qel::collector {

SqliteTransaction::SqliteTransaction(SqliteConnection& connection, const char* kind)
    : connection_(connection) {
  connection_.execute(std::string("BEGIN ") + kind);
}

SqliteTransaction::~SqliteTransaction() {
  if (sqlite3_get_autocommit(connection_.handle()) == 0) {
    sqlite3_exec(connection_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

void SqliteTransaction::commit() {
  if (connection_.isLate()) {
    connection_.fail("the deadline has passed");
  }
  connection_.execute("COMMIT");
}

SqliteExecution::~SqliteExecution() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

SqliteExecution& SqliteExecution::bindNumber(std::int64_t value) {
  return check(sqlite3_bind_int64(statement_, ++parameters_, value));
}

SqliteExecution& SqliteExecution::bindText(std::string_view text) {
  return check(sqlite3_bind_text64(statement_, ++parameters_, text.data(), text.size(),
                                   SQLITE_STATIC, SQLITE_UTF8));
}

SqliteExecution& SqliteExecution::bindBlob(std::string_view bytes) {
  return check(
      sqlite3_bind_blob64(statement_, ++parameters_, bytes.data(), bytes.size(), SQLITE_STATIC));
}

SqliteExecution& SqliteExecution::bindNull() {
  return check(sqlite3_bind_null(statement_, ++parameters_));
}

bool SqliteExecution::step() {
  const int result = sqlite3_step(statement_);
  check(result == SQLITE_ROW || result == SQLITE_DONE ? SQLITE_OK : result);
  return result == SQLITE_ROW;
}

std::int64_t SqliteExecution::number(int column) const {
  return sqlite3_column_int64(statement_, column);
}

std::vector<std::int64_t> SqliteExecution::numbers() {
  std::vector<std::int64_t> values;
  while (step()) {
    values.push_back(number(0));
  }
  return values;
}

std::string_view SqliteExecution::text(int column) const {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  return text == nullptr ? std::string_view() : std::string_view(text, size);
}

SqliteExecution& SqliteExecution::check(int result) {
  if (result != SQLITE_OK) {
    connection_.failAsReported();
  }
  return *this;
}

}  // namespace qel::collector
