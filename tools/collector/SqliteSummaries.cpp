#include "tools/collector/SqliteSummaries.h"

namespace qel::collector {
namespace {

/// The number of rows that are summed up in one step.
constexpr const char* rowsOfStep = "10000";

constexpr const char* schema = R"(
  DROP TABLE IF EXISTS summary_sessions;
  DROP TABLE IF EXISTS summary_daily;
  DROP TABLE IF EXISTS summary_crashes;
  DROP TABLE IF EXISTS summary_state;
  CREATE TABLE summary_sessions (id INTEGER PRIMARY KEY, session TEXT NOT NULL,
    installation TEXT NOT NULL, version TEXT NOT NULL, version_time TEXT NOT NULL, first TEXT,
    last TEXT, events INTEGER NOT NULL, environments INTEGER NOT NULL, crashed INTEGER NOT NULL,
    stopped INTEGER NOT NULL, last_command TEXT, UNIQUE (session, installation));
  CREATE TABLE summary_daily (kind TEXT NOT NULL, day TEXT NOT NULL, session INTEGER NOT NULL,
    name TEXT NOT NULL, value INTEGER NOT NULL, PRIMARY KEY (kind, day, session, name))
    WITHOUT ROWID;
  CREATE TABLE summary_crashes (session INTEGER NOT NULL, event INTEGER NOT NULL, time TEXT,
    code TEXT NOT NULL, command TEXT NOT NULL, count INTEGER NOT NULL,
    PRIMARY KEY (session, event)) WITHOUT ROWID;
  CREATE TABLE summary_state (name TEXT PRIMARY KEY, last INTEGER NOT NULL) WITHOUT ROWID;
  INSERT INTO summary_state VALUES ('events', 0), ('environments', 0);
  )";

constexpr const char* commandQuery =
    "SELECT last_command FROM summary_sessions WHERE session = ? AND installation = ?";

constexpr const char* sessionInsertion = R"(
  INSERT INTO summary_sessions (session, installation, version, version_time, first, last, events,
    environments, crashed, stopped, last_command) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)
  ON CONFLICT DO UPDATE SET
    version = CASE WHEN (excluded.version_time, excluded.version) > (version_time, version)
      THEN excluded.version ELSE version END,
    version_time = max(version_time, excluded.version_time),
    first = min(ifnull(first, excluded.first), ifnull(excluded.first, first)),
    last = max(ifnull(last, excluded.last), ifnull(excluded.last, last)),
    events = events + excluded.events, environments = environments + excluded.environments,
    crashed = crashed + excluded.crashed, stopped = stopped + excluded.stopped,
    last_command = ifnull(excluded.last_command, last_command)
  RETURNING id)";

constexpr const char* dailyInsertion = R"(
  INSERT INTO summary_daily (kind, day, session, name, value) VALUES (?, ?, ?, ?, ?)
  ON CONFLICT DO UPDATE SET value =
    CASE kind WHEN 'memory' THEN max(value, excluded.value) ELSE value + excluded.value END)";

constexpr const char* crashInsertion = R"(
  INSERT INTO summary_crashes (session, event, time, code, command, count)
    VALUES (?, ?, nullif(?, ''), ?, ?, ?)
  ON CONFLICT DO UPDATE SET count = count + excluded.count)";

}  // namespace

void SqliteSummaries::create(SqliteConnection& connection) {
  connection.execute(schema);
  SqliteSummaries summaries(connection);
  while (summaries.addNext()) {
  }
}

std::string SqliteSummaries::columnsOf(std::string_view table) {
  const std::string common = "id, count, session, installation, time, ";
  return table == "events"
             ? common +
                   "category, subcategory, event, CASE WHEN category = 'MemoryUsage'"
                   " OR (category = 'Application' AND subcategory = 'Crashed') THEN text END"
             : common + "NULL, NULL, NULL, text";
}

SummedRow SqliteSummaries::rowOf(const SqliteExecution& execution) {
  return {execution.number(0), execution.number(1), execution.text(2),
          execution.text(3),   execution.text(4),   execution.text(5),
          execution.text(6),   execution.text(7),   execution.text(8)};
}

SqliteSummaries::SqliteSummaries(SqliteConnection& connection)
    : connection_(connection),
      tables_{prepareTable("events", &SessionSummary::addEvent),
              prepareTable("environments", &SessionSummary::addEnvironment)},
      command_(connection.prepare(commandQuery)),
      session_(connection.prepare(sessionInsertion)),
      emptySession_(connection.prepare("DELETE FROM summary_sessions WHERE id = ? AND events <= 0"
                                       " AND environments <= 0")),
      daily_(connection.prepare(dailyInsertion)),
      emptyDaily_(connection.prepare("DELETE FROM summary_daily WHERE kind = ? AND day = ?"
                                     " AND session = ? AND name = ? AND value <= 0")),
      emptyMemory_(connection.prepare(
          "DELETE FROM summary_daily WHERE kind = 'memory' AND day = ?1 AND session = ?2"
          " AND NOT EXISTS (SELECT 1 FROM summary_daily WHERE kind = 'category' AND day = ?1"
          " AND session = ?2 AND name = ?3)")),
      crash_(connection.prepare(crashInsertion)),
      emptyCrash_(connection.prepare(
          "DELETE FROM summary_crashes WHERE session = ? AND event = ? AND count <= 0")) {}

SqliteSummaries::Table SqliteSummaries::prepareTable(
    const std::string& name, void (SessionSummary::*add)(const SummedRow& row)) {
  return {connection_.prepare("SELECT " + columnsOf(name) + " FROM " + name +
                              " WHERE id > (SELECT last FROM summary_state WHERE name = '" + name +
                              "') ORDER BY id LIMIT " + rowsOfStep),
          connection_.prepare("UPDATE summary_state SET last = ? WHERE name = '" + name + "'"),
          connection_.prepare("UPDATE summary_state SET last = (SELECT ifnull(max(id), 0) FROM " +
                              name + ") WHERE name = '" + name + "'"),
          add};
}

void SqliteSummaries::change(const std::function<void()>& work) {
  for (bool isDone = false; !isDone;) {
    SqliteTransaction transaction(connection_);
    isDone = !addNext();
    if (isDone) {
      work();
      write();
      for (const Table& table : tables_) {
        SqliteExecution(connection_, table.setState).step();
      }
    }
    transaction.commit();
  }
}

bool SqliteSummaries::addNext() {
  pending_.clear();
  bool isAny = false;
  for (const Table& table : tables_) {
    isAny = addNext(table) || isAny;
  }
  write();
  return isAny;
}

bool SqliteSummaries::addNext(const Table& table) {
  std::int64_t last = 0;
  {
    SqliteExecution execution(connection_, table.next);
    while (execution.step()) {
      const SummedRow row = rowOf(execution);
      (of(row).*table.add)(row);
      last = row.id;
    }
  }
  if (last == 0) {
    return false;
  }
  SqliteExecution(connection_, table.state).bindNumber(last).step();
  return true;
}

SessionSummary& SqliteSummaries::of(const SummedRow& row) {
  const KeyView key(row.session, row.installation);
  const auto place = pending_.find(key);
  return place != pending_.end() ? place->second : pending_[Key(key)];
}

void SqliteSummaries::write() {
  for (const auto& [key, summary] : pending_) {
    write(key, summary);
  }
  pending_.clear();
}

void SqliteSummaries::write(const Key& key, const SessionSummary& summary) {
  const std::string inherited = summary.crashes.empty() ? "" : inheritedCommand(key);
  const std::int64_t session = writeSession(key, summary);
  for (const auto& [dailyKey, value] : summary.daily) {
    writeDaily(session, dailyKey, value);
  }
  for (const auto& crash : summary.crashes) {
    writeCrash(session, crash, inherited);
  }
}

/// The last command that was started in earlier transactions.
std::string SqliteSummaries::inheritedCommand(const Key& key) {
  SqliteExecution execution(connection_, command_);
  execution.bindText(key.first).bindText(key.second);
  return execution.step() ? std::string(execution.text(0)) : "";
}

std::int64_t SqliteSummaries::writeSession(const Key& key, const SessionSummary& summary) {
  const auto& [session, installation] = key;
  std::int64_t id = 0;
  {
    SqliteExecution execution(connection_, session_);
    const auto bindText = [&](const std::string& text) {
      text.empty() ? execution.bindNull() : execution.bindText(text);
    };
    execution.bindText(session).bindText(installation);
    execution.bindText(summary.version).bindText(summary.versionTime);
    bindText(summary.first);
    bindText(summary.last);
    execution.bindNumber(summary.events)
        .bindNumber(summary.environments)
        .bindNumber(summary.crashed)
        .bindNumber(summary.stopped);
    summary.lastCommand ? execution.bindText(*summary.lastCommand) : execution.bindNull();
    execution.step();
    id = execution.number(0);
  }
  if (summary.events < 0 || summary.environments < 0) {
    SqliteExecution(connection_, emptySession_).bindNumber(id).step();
  }
  return id;
}

void SqliteSummaries::writeDaily(std::int64_t session, const SessionSummary::DailyKey& key,
                                 std::int64_t value) {
  const auto& [kind, day, name] = key;
  SqliteExecution(connection_, daily_)
      .bindText(kind)
      .bindText(day)
      .bindNumber(session)
      .bindText(name)
      .bindNumber(value)
      .step();
  if (value < 0) {
    removeEmptyDaily(session, key);
  }
}

void SqliteSummaries::removeEmptyDaily(std::int64_t session, const SessionSummary::DailyKey& key) {
  const auto& [kind, day, name] = key;
  SqliteExecution(connection_, emptyDaily_)
      .bindText(kind)
      .bindText(day)
      .bindNumber(session)
      .bindText(name)
      .step();
  if (kind == SessionSummary::category && name == SessionSummary::memoryCategory) {
    SqliteExecution(connection_, emptyMemory_)
        .bindText(day)
        .bindNumber(session)
        .bindText(name)
        .step();
  }
}

void SqliteSummaries::writeCrash(std::int64_t session, const SessionSummary::Crash& crash,
                                 const std::string& inherited) {
  SqliteExecution(connection_, crash_)
      .bindNumber(session)
      .bindNumber(crash.event)
      .bindText(crash.time)
      .bindText(crash.code)
      .bindText(crash.command ? *crash.command : inherited)
      .bindNumber(crash.count)
      .step();
  if (crash.count < 0) {
    SqliteExecution(connection_, emptyCrash_).bindNumber(session).bindNumber(crash.event).step();
  }
}

}  // namespace qel::collector
