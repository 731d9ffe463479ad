#include "tools/collector/SqliteSchema.h"

#include <cstring>
#include <string>

#include <sqlite3.h>

#include "host/QelLog/LogManager.h"
#include "tools/collector/RowKey.h"
#include "tools/collector/SqliteExecution.h"
#include "tools/collector/SqliteSummaries.h"

namespace qel::collector {
namespace {

/// "qelc": distinguishes a store from other SQLite files.
constexpr std::int64_t applicationId = 0x71656c63;
constexpr std::int64_t currentVersion = 2;

/// The key's column was called `digest` in version 0. Statements of a program that knows only
/// version 0 therefore fail, and cannot store a text with its old key.
constexpr const char* schema = R"(
  CREATE TABLE events (id INTEGER PRIMARY KEY, received TEXT NOT NULL, count INTEGER NOT NULL,
    user TEXT, session TEXT, installation TEXT, time TEXT, category TEXT, subcategory TEXT,
    event TEXT, text TEXT NOT NULL, key BLOB NOT NULL UNIQUE);
  CREATE INDEX events_by_installation ON events (installation);
  CREATE INDEX events_by_time ON events (time);
  CREATE TABLE environments (id INTEGER PRIMARY KEY, received TEXT NOT NULL,
    count INTEGER NOT NULL, user TEXT, session TEXT, installation TEXT, time TEXT,
    text TEXT NOT NULL, key BLOB NOT NULL UNIQUE);
  CREATE INDEX environments_by_installation ON environments (installation);
  CREATE INDEX environments_by_time ON environments (time);
  CREATE TABLE refused (id INTEGER PRIMARY KEY, received TEXT NOT NULL, count INTEGER NOT NULL,
    user TEXT, reason TEXT NOT NULL, text BLOB NOT NULL, key BLOB NOT NULL UNIQUE);
)";

void keyFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  Sha256 digest{};
  if (sqlite3_value_bytes(values[1]) != static_cast<int>(digest.size())) {
    sqlite3_result_error(context, "a digest has the wrong size", -1);
    return;
  }
  std::memcpy(digest.data(), sqlite3_value_blob(values[1]), digest.size());
  std::optional<std::string_view> session;
  if (sqlite3_value_type(values[0]) != SQLITE_NULL) {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(values[0]));
    session.emplace(text, static_cast<std::size_t>(sqlite3_value_bytes(values[0])));
  }
  const Sha256 key = keyOf(session, digest);
  sqlite3_result_blob(context, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
}

void renameToOld(const SqliteConnection& connection, const std::string& table) {
  connection.execute("ALTER TABLE " + table + " RENAME TO old_" + table);
}

void moveFromOld(const SqliteConnection& connection, const SqliteTable& table) {
  const std::string name = table.name;
  const std::string columns = std::string("id, received, count, text, ") + table.columns;
  const std::string session = name == "refused" ? "NULL" : "session";
  connection.execute("INSERT INTO " + name + " (" + columns + ", key) SELECT " + columns +
                     ", store_key(" + session + ", digest) FROM old_" + name + " ORDER BY id");
  connection.execute("DROP TABLE old_" + name);
}

/// Copies the tables, because their unique index cannot be dropped.
void upgradeVersion0(const SqliteConnection& connection) {
  sqlite3_create_function_v2(connection.handle(), "store_key", 2, SQLITE_UTF8, nullptr, keyFunction,
                             nullptr, nullptr, nullptr);
  for (const auto& table : sqliteTables) {
    renameToOld(connection, table.name);
  }
  connection.execute(schema);
  for (const auto& table : sqliteTables) {
    moveFromOld(connection, table);
  }
}

bool isStore(SqliteConnection& connection) {
  return connection.number("PRAGMA application_id") == applicationId;
}

bool hasTablesOfVersion0(SqliteConnection& connection) {
  return connection.number("PRAGMA user_version") == 0 &&
         connection.number(
             "SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND sql LIKE '%digest%'"
             " AND name IN ('events', 'environments', 'refused')") == 3;
}

void createOrUpgrade(SqliteConnection& connection) {
  if (connection.number("SELECT count(*) FROM sqlite_schema") == 0) {
    connection.execute(schema);
  } else {
    const bool isVersion0 = !isStore(connection);
    if (isVersion0 && !hasTablesOfVersion0(connection)) {
      connection.fail("it is another program's file");
    }
    log::LogManager::instance()
        .getLogger("qel.collector")
        ->log(log::Level::Info, "upgrading the store, which takes a while");
    if (isVersion0) {
      upgradeVersion0(connection);
    }
  }
  SqliteSummaries::create(connection);
  connection.execute("PRAGMA application_id = " + std::to_string(applicationId));
  rewriteVersion(connection);
}

/// Whether the file is a store of the current version.
bool isCurrent(SqliteConnection& connection) {
  if (!isStore(connection)) {
    return false;
  }
  const std::int64_t version = connection.number("PRAGMA user_version");
  if (version > currentVersion) {
    connection.fail("a newer version of the collector made it");
  }
  return version == currentVersion;
}

}  // namespace

void requireCurrentVersion(SqliteConnection& connection) {
  if (!isCurrent(connection)) {
    connection.fail("it is no store, or one that has not been upgraded");
  }
}

void prepareSchema(SqliteConnection& connection) {
  if (isCurrent(connection)) {
    return;
  }
  // Views that refer to the tables must not hinder the upgrade.
  connection.execute("PRAGMA legacy_alter_table = ON");
  SqliteTransaction transaction(connection, "EXCLUSIVE");
  connection.setDeadline(std::chrono::steady_clock::time_point::max());
  if (!isCurrent(connection)) {
    createOrUpgrade(connection);
  }
  transaction.commit();
  connection.setDeadline(std::chrono::steady_clock::now() + SqliteConnection::patience);
}

void rewriteVersion(SqliteConnection& connection) {
  connection.execute("PRAGMA user_version = " + std::to_string(currentVersion));
}

}  // namespace qel::collector
