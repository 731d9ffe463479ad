#include "tools/collector/SqliteRemoval.h"

#include "tools/collector/RowKey.h"
#include "tools/collector/SqliteSchema.h"

namespace qel::collector {

SqliteRemoval::SqliteRemoval(SqliteConnection& connection, SqliteSummaries& summaries,
                             const std::string& table)
    : connection_(connection),
      summaries_(summaries),
      removal_(connection.prepare("DELETE FROM " + table + " WHERE id = ?")),
      tables_{prepareTable("events", &SessionSummary::addEvent),
              prepareTable("environments", &SessionSummary::addEnvironment)},
      table_(table == "events"         ? &tables_[0]
             : table == "environments" ? &tables_[1]
                                       : nullptr),
      session_(connection.prepare(
          "SELECT id FROM summary_sessions WHERE session = ? AND installation = ?")),
      removalOfDays_(connection.prepare(
          "DELETE FROM summary_daily WHERE kind IN ('category', 'started', 'cancelled', 'memory')"
          " AND day IN (SELECT substr(time, 1, 10) FROM events WHERE key BETWEEN ? AND ?)"
          " AND session = ?")),
      removalOfCrashes_(connection.prepare("DELETE FROM summary_crashes WHERE session = ?")),
      removalOfSession_(connection.prepare("DELETE FROM summary_sessions WHERE id = ?")) {}

SqliteRemoval::Table SqliteRemoval::prepareTable(
    const std::string& name, void (SessionSummary::*add)(const SummedRow& row)) {
  const std::string query = "SELECT " + SqliteSummaries::columnsOf(name) + " FROM " + name;
  return {connection_.prepare(query + " WHERE id = ?"),
          connection_.prepare(query + " WHERE key BETWEEN ? AND ? AND session = ?"
                                      " AND ifnull(installation, '') = ? ORDER BY id"),
          add};
}

void SqliteRemoval::remove(const std::vector<std::int64_t>& ids) {
  const auto affected = table_ == nullptr ? std::set<Session>() : subtract(*table_, ids);
  for (const Session& session : affected) {
    forget(session);
  }
  for (const std::int64_t id : ids) {
    SqliteExecution(connection_, removal_).bindNumber(id).step();
  }
  for (const Session& session : affected) {
    for (const Table& table : tables_) {
      sumUp(table, session);
    }
  }
}

/// Subtracts rows without a session, and returns the sessions of the others.
std::set<SqliteRemoval::Session> SqliteRemoval::subtract(const Table& table,
                                                         const std::vector<std::int64_t>& ids) {
  std::set<Session> sessions;
  for (const std::int64_t id : ids) {
    SqliteExecution execution(connection_, table.row);
    execution.bindNumber(id).step();
    SummedRow row = SqliteSummaries::rowOf(execution);
    if (!row.session.empty()) {
      sessions.emplace(row.session, row.installation);
      continue;
    }
    row.count = -row.count;
    (summaries_.of(row).*table.add)(row);
  }
  return sessions;
}

void SqliteRemoval::forget(const Session& session) {
  const auto& [name, installation] = session;
  std::int64_t id = 0;
  {
    SqliteExecution execution(connection_, session_);
    if (!execution.bindText(name).bindText(installation).step()) {
      return;
    }
    id = execution.number(0);
  }
  const KeyRange keys = keysOf(name);
  SqliteExecution(connection_, removalOfDays_)
      .bindBlob(bytesOf(keys.first))
      .bindBlob(bytesOf(keys.last))
      .bindNumber(id)
      .step();
  SqliteExecution(connection_, removalOfCrashes_).bindNumber(id).step();
  SqliteExecution(connection_, removalOfSession_).bindNumber(id).step();
}

void SqliteRemoval::sumUp(const Table& table, const Session& session) {
  const auto& [name, installation] = session;
  const KeyRange keys = keysOf(name);
  SqliteExecution execution(connection_, table.rowsOfSession);
  execution.bindBlob(bytesOf(keys.first))
      .bindBlob(bytesOf(keys.last))
      .bindText(name)
      .bindText(installation);
  while (execution.step()) {
    const SummedRow row = SqliteSummaries::rowOf(execution);
    (summaries_.of(row).*table.add)(row);
  }
}

}  // namespace qel::collector
