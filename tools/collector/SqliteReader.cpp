#include "tools/collector/SqliteReader.h"

#include <algorithm>

#include <sqlite3.h>

#include "tools/collector/RowKey.h"
#include "tools/collector/SqliteExecution.h"
#include "tools/collector/SqliteFigures.h"
#include "tools/collector/SqliteSchema.h"

namespace qel::collector {
namespace {

/// In kilobytes. The summaries of some million rows fit.
constexpr const char* settings = "PRAGMA cache_size = -32000; PRAGMA temp_store = MEMORY";

Cell cellOf(sqlite3_stmt* statement, const SqliteExecution& execution, int column) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
      return std::monostate();
    case SQLITE_INTEGER:
      return execution.number(column);
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement, column);
    default:
      return std::string(execution.text(column));
  }
}

std::vector<std::string> columnsOf(sqlite3_stmt* statement) {
  std::vector<std::string> names(static_cast<std::size_t>(sqlite3_column_count(statement)));
  for (std::size_t column = 0; column < names.size(); ++column) {
    names[column] = sqlite3_column_name(statement, static_cast<int>(column));
  }
  return names;
}

}  // namespace

SqliteReader::SqliteReader(const std::filesystem::path& file)
    : connection_(file, SqliteConnection::Missing::Fail, SqliteConnection::Access::Read) {
  connection_.execute(settings);
  requireCurrentVersion(connection_);
}

ResultTable SqliteReader::read(std::string_view figure, const Filter& filter,
                               std::chrono::steady_clock::time_point deadline) {
  connection_.setDeadline(deadline);
  if (figure != "live") {
    return answer(figure, filter);
  }
  const SqliteTransaction transaction(connection_, "DEFERRED");
  const std::int64_t newest = connection_.number("SELECT ifnull(max(id), 0) FROM events");
  Filter known = filter;
  if (!known.after.empty() && idOf(known.after) > newest) {
    known.after.clear();
  }
  ResultTable table = answer(figure, known);
  if (known.after.empty() || table.rows.size() < known.limit) {
    table.cursor = std::to_string(newest);
  }
  return table;
}

ResultTable SqliteReader::answer(std::string_view figure, const Filter& filter) {
  const SqliteQuery query = queryOf(figure, filter);
  const SqliteStatement statement = connection_.prepare(query.sql());
  SqliteExecution execution(connection_, statement);
  for (const std::string& value : query.values()) {
    execution.bindText(value);
  }
  ResultTable table{columnsOf(statement.get()), {}, {}};
  while (execution.step()) {
    auto& row = table.rows.emplace_back();
    for (int column = 0; column < static_cast<int>(table.columns.size()); ++column) {
      row.push_back(cellOf(statement.get(), execution, column));
    }
  }
  return table;
}

StoredSession SqliteReader::session(const std::string& id,
                                    std::chrono::steady_clock::time_point deadline) {
  connection_.setDeadline(deadline);
  const SqliteTransaction transaction(connection_, "DEFERRED");
  const KeyRange keys = keysOf(id);
  StoredSession found;
  std::size_t bytes = 0;
  for (const bool isEnvironment : {true, false}) {
    // The IDs are sorted without their texts.
    const std::string table = isEnvironment ? "environments" : "events";
    std::string newest = "SELECT id FROM ";
    newest.append(table).append(
        " WHERE key BETWEEN ? AND ? AND session = ? ORDER BY id DESC LIMIT ");
    newest += std::to_string(SessionLimits::records + 1);
    std::string sql = "SELECT count, text FROM ";
    sql.append(table).append(" WHERE id IN (").append(newest).append(") ORDER BY id DESC");
    const SqliteStatement statement = connection_.prepare(sql);
    SqliteExecution execution(connection_, statement);
    execution.bindBlob(bytesOf(keys.first)).bindBlob(bytesOf(keys.last)).bindText(id);
    const auto first = static_cast<std::ptrdiff_t>(found.records.size());
    while (execution.step()) {
      const std::string_view text = execution.text(1);
      bytes += text.size();
      if (found.records.size() == SessionLimits::records || bytes > SessionLimits::bytes) {
        found.isShortened = true;
        break;
      }
      if (connection_.isLate()) {
        connection_.fail("the deadline has passed");
      }
      found.records.push_back({isEnvironment, std::string(text), execution.number(0)});
    }
    std::reverse(found.records.begin() + first, found.records.end());
  }
  return found;
}

std::vector<std::string> SqliteReader::sessionsBeginningWith(
    const std::string& beginning, std::size_t limit,
    std::chrono::steady_clock::time_point deadline) {
  connection_.setDeadline(deadline);
  const SqliteStatement statement = connection_.prepare(
      "SELECT DISTINCT session FROM summary_sessions WHERE instr(" + normalizedId("session") +
      ", " + normalizedId("?") + ") = 1 ORDER BY length(session), session LIMIT ?");
  SqliteExecution execution(connection_, statement);
  execution.bindText(beginning).bindNumber(static_cast<std::int64_t>(limit));
  std::vector<std::string> ids;
  while (execution.step()) {
    ids.emplace_back(execution.text(0));
  }
  return ids;
}

}  // namespace qel::collector
