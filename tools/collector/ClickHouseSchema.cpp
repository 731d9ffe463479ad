#include "tools/collector/ClickHouseSchema.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "tools/collector/ClickHouseSchemaText.h"
#include "tools/collector/ClickHouseText.h"

namespace qel::collector {
namespace {

using Deadline = ClickHouseConnection::Deadline;
using Columns = ClickHouseTable::Columns;

constexpr int currentVersion = 1;

const std::string refilling =
    "create session_days and session_days_view with the statements of single.sql, and fill"
    " session_days again as the manual says";

const Columns common{{"key", "FixedString(24)"}, {"received", "DateTime('UTC')"},
                     {"received_ms", "UInt16"},  {"place", "UInt32"},
                     {"user", "String"},         {"count", "UInt32"},
                     {"precedence", "UInt64"},   {"text", "String"}};
const Columns ofRecords{{"session", "String"},
                        {"installation", "String"},
                        {"day", "Date"},
                        {"time", "DateTime('UTC')"},
                        {"time_ms", "UInt16"}};
const Columns ofEvents{{"category", "String"},
                       {"subcategory", "String"},
                       {"event", "String"},
                       {"detail_keys", "Array(String)"},
                       {"detail_values", "Array(String)"}};
const Columns computedOfEvents{
    {"kind",
     "Enum8('other' = 0, 'started' = 1, 'cancelled' = 2, 'crashed' = 3, 'stopped' = 4,"
     " 'memory' = 5)"},
    {"session_id", "UInt64"}};

Columns joined(const std::vector<Columns>& parts) {
  Columns columns;
  for (const auto& part : parts) {
    columns.insert(columns.end(), part.begin(), part.end());
  }
  return columns;
}

/// What the database has: the values of each row of a result.
std::vector<std::vector<std::string>> rowsOf(const std::string& result) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(result);
  for (std::string line; std::getline(lines, line);) {
    auto& row = rows.emplace_back();
    std::istringstream values(line);
    for (std::string value; std::getline(values, value, '\t');) {
      row.push_back(value);
    }
  }
  return rows;
}

/// The name and the type of each column of a table that the database has.
std::map<std::string, std::string> columnsOf(ClickHouseConnection& connection,
                                             const std::string& table, Deadline deadline) {
  std::map<std::string, std::string> columns;
  for (const auto& row :
       rowsOf(connection.run("SELECT name, type FROM system.columns WHERE database = "
                             "currentDatabase() AND table = " +
                                 sqlLiteral(table) + " FORMAT TSVRaw",
                             deadline))) {
    columns.emplace(row.at(0), row.at(1));
  }
  return columns;
}

/// Name, engine, sorting key and the engine's parameters of a table; empty if there is none.
std::vector<std::string> engineOf(ClickHouseConnection& connection, const std::string& table,
                                  Deadline deadline) {
  const auto rows = rowsOf(connection.run(
      "SELECT name, engine, sorting_key, engine_full FROM system.tables WHERE database = "
      "currentDatabase() AND name = " +
          sqlLiteral(table) + " FORMAT TSVRaw",
      deadline));
  return rows.empty() || rows.front().size() < 4 ? std::vector<std::string>() : rows.front();
}

void checkTable(ClickHouseConnection& connection, const ClickHouseTable& table, Deadline deadline) {
  const auto engine = engineOf(connection, table.name, deadline);
  if (engine.empty()) {
    connection.fail("it has no table " + table.name + "; --create creates the tables");
  }
  const bool isDistributed = engine[1] == "Distributed";
  if (!isDistributed && (!engine[1].ends_with(table.engine) || engine[2] != table.order)) {
    connection.fail("the table " + table.name + " must have the engine " + table.engine +
                    " and be ordered by " + table.order);
  }
  const auto columns = columnsOf(connection, table.name, deadline);
  for (const auto& [name, type] : joined({table.columns, table.computed})) {
    const auto found = columns.find(name);
    if (found == columns.end()) {
      connection.fail("the table " + table.name + " has no column " + name);
    }
    if (found->second != type && found->second != "LowCardinality(" + type + ')') {
      std::string reason = "the column " + table.name;
      reason.append(".").append(name).append(" has the type ").append(found->second);
      connection.fail(reason.append(" instead of ").append(type));
    }
  }
}

bool hasSummaryView(ClickHouseConnection& connection, Deadline deadline) {
  return connection.run(
             "SELECT count() FROM system.tables WHERE database = currentDatabase()"
             " AND name = 'session_days_view' AND engine = 'MaterializedView'",
             deadline) != "0\n";
}

/// A summary that is created later would lack the events that are stored already.
void checkSummaryOfEvents(ClickHouseConnection& connection, Deadline deadline) {
  if (engineOf(connection, "events", deadline).empty()) {
    return;
  }
  checkTable(connection, clickHouseTables().front(), deadline);
  const bool isSummedUp = hasSummaryView(connection, deadline) &&
                          !engineOf(connection, sessionDays().name, deadline).empty();
  if (!isSummedUp && connection.run("SELECT count() FROM events", deadline) != "0\n") {
    connection.fail("it has events, but no summary of them: " + refilling);
  }
}

void checkVersion(ClickHouseConnection& connection, Deadline deadline) {
  if (engineOf(connection, "schema_version", deadline).empty()) {
    connection.fail("it has no table schema_version; --create creates the tables");
  }
  const std::string version = connection.run("SELECT max(version) FROM schema_version", deadline);
  if (std::stoul(version) > currentVersion) {
    connection.fail("a newer version of the collector made it");
  }
}

std::string withoutQuotes(std::string text) {
  std::erase(text, '\'');
  return text;
}

}  // namespace

const std::vector<ClickHouseTable>& clickHouseTables() {
  static const std::vector<ClickHouseTable> tables{
      {"events", joined({common, ofRecords, ofEvents}), computedOfEvents},
      {"environments", joined({common, ofRecords, {{"version", "String"}}}), {}},
      {"refused", joined({common, {{"reason", "String"}}}), {}},
  };
  return tables;
}

const ClickHouseTable& sessionDays() {
  static const ClickHouseTable table{"session_days",
                                     {},
                                     {{"day", "Date"},
                                      {"session", "String"},
                                      {"installation", "String"},
                                      {"user", "String"},
                                      {"received_day", "Date"},
                                      {"first", "AggregateFunction(min, UInt64)"},
                                      {"last", "AggregateFunction(max, UInt64)"},
                                      {"crashed", "AggregateFunction(max, UInt8)"},
                                      {"stopped", "AggregateFunction(max, UInt8)"},
                                      {"memory", "AggregateFunction(max, Int64)"}},
                                     "AggregatingMergeTree",
                                     "day, session, installation, user, received_day"};
  return table;
}

std::string insertionInto(const ClickHouseTable& table) {
  std::string names;
  for (const auto& [name, type] : table.columns) {
    names.append(names.empty() ? "" : ", ").append(name);
  }
  return "INSERT INTO " + table.name + " (" + names + ") FORMAT RowBinary";
}

void createSchema(ClickHouseConnection& connection, Deadline deadline) {
  connection.runOutside("CREATE DATABASE IF NOT EXISTS " + connection.access().database, deadline);
  checkSummaryOfEvents(connection, deadline);
  std::istringstream lines(clickHouseSchema);
  std::string statement;
  for (std::string line; std::getline(lines, line);) {
    statement += line + '\n';
    if (line.ends_with(';')) {
      statement.erase(statement.rfind(';'));
      connection.run(statement, deadline);
      statement.clear();
    }
  }
}

void checkSchema(ClickHouseConnection& connection, Deadline deadline) {
  const std::string& database = connection.access().database;
  if (connection
          .runOutside("SELECT name FROM system.databases WHERE name = " + sqlLiteral(database),
                      deadline)
          .empty()) {
    connection.fail("there is no such database; --create creates it");
  }
  for (const auto& table : clickHouseTables()) {
    checkTable(connection, table, deadline);
  }
  checkTable(connection, sessionDays(), deadline);
  if (!hasSummaryView(connection, deadline)) {
    connection.fail("it has no materialised view session_days_view: " + refilling);
  }
  checkVersion(connection, deadline);
}

void rewriteVersion(ClickHouseConnection& connection, Deadline deadline) {
  connection.run("INSERT INTO schema_version SELECT " + std::to_string(currentVersion) + ", now()",
                 deadline);
}

bool isDeletingFrom(ClickHouseConnection& connection, const std::string& pattern,
                    Deadline deadline) {
  const std::string unfinished =
      "SELECT count() FROM system.mutations WHERE database = currentDatabase() AND is_done = 0"
      " AND table LIKE ";
  return connection.run(unfinished + sqlLiteral(pattern), deadline) != "0\n";
}

std::string deletionFrom(ClickHouseConnection& connection, const std::string& table,
                         Deadline deadline) {
  const auto engine = engineOf(connection, table, deadline);
  if (engine.empty()) {
    connection.fail("it has no table " + table);
  }
  std::string place = table;
  if (engine[1] == "Distributed") {
    // Distributed(cluster, database, table, sharding key)
    std::istringstream parameters(withoutQuotes(engine[3].substr(engine[3].find('(') + 1)));
    std::string cluster;
    std::string database;
    std::string local;
    std::getline(parameters, cluster, ',');
    std::getline(parameters >> std::ws, database, ',');
    std::getline(parameters >> std::ws, local, ',');
    place = database + '.' + local + " ON CLUSTER " + sqlLiteral(cluster);
  }
  return "ALTER TABLE " + place + " DELETE WHERE ";
}

}  // namespace qel::collector
