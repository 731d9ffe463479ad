#include "tools/records/CollectorStore.h"

#include <algorithm>

#include <sqlite3.h>

#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"
#include "tools/records/Moment.h"

namespace qel::records {
namespace {

/// "qelc", the application ID of a store.
constexpr std::int64_t applicationId = 0x71656c63;
constexpr std::int64_t oldestVersion = 1;
constexpr std::int64_t currentVersion = 2;
constexpr std::size_t sessionBytes = 8;
constexpr std::size_t keyBytes = 32;

constexpr const char* nameOf(Table table) {
  return table == Table::Events ? "events" : "environments";
}

ReadOnlyDatabase::Query queryOf(Table table) {
  const bool hasNames = table == Table::Events;
  return {nameOf(table),
          std::string("id, text, session, time, count, ") +
              (hasNames ? "category, subcategory, event" : "NULL, NULL, NULL"),
          "id"};
}

/// The row, of which a damaged file may have any count.
Row rowOf(const Statement& columns) {
  constexpr std::int64_t mostEqualTexts = 100'000;  // more do not fit into a package
  Row row;
  row.id = columns.number(0);
  row.text = columns.text(1);
  row.isRecord = true;
  row.session = columns.text(2);
  row.time = columns.text(3);
  row.count = std::clamp<std::int64_t>(columns.number(4), 1, mostEqualTexts);
  row.category = columns.text(5);
  row.subcategory = columns.text(6);
  row.event = columns.text(7);
  return row;
}

std::string hexadecimal(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text.append({digits[value / 16], digits[value % 16]});
  }
  return text;
}

std::int64_t numberOf(const ReadOnlyDatabase& database, const std::string& statement) {
  const auto numbers = database.numbers(statement);
  return numbers && !numbers->empty() ? numbers->front() : 0;
}

}  // namespace

bool CollectorStore::isStore(const ReadOnlyDatabase& database) {
  return numberOf(database, "PRAGMA application_id") == applicationId ||
         numberOf(database,
                  "SELECT count(*) FROM sqlite_schema WHERE name IN ('events', 'environments',"
                  " 'refused') AND sql LIKE '%digest%'") == 3;
}

CollectorStore::CollectorStore(std::unique_ptr<ReadOnlyDatabase> database)
    : RecordFile(std::move(database)) {
  const auto version = numberOf(RecordFile::database(), "PRAGMA user_version");
  if (version < oldestVersion || version > currentVersion) {
    throw tools::InputError(
        utilities::utf8FromPath(path()) +
        (version > currentVersion
             ? " is the store of a newer collector"
             : " is the store of an older collector: start the present one with it once"));
  }
}

void CollectorStore::forEachRowAfter(std::int64_t position, Table table, const RowReader& reader) {
  database().forEachRow(
      queryOf(table), [&](const Statement& columns) { return reader(rowOf(columns)); }, position);
}

void CollectorStore::forEachRecord(const std::string& session, Table table,
                                   const RowReader& reader) {
  const auto readIfOfSession = [&](const Statement& columns) {
    const auto row = rowOf(columns);
    return row.session != session || reader(row);
  };
  const auto key = keys_.find(session);
  const auto last = std::string(keyBytes - sessionBytes, '\xff');
  const auto ids =
      key == keys_.end()
          ? std::nullopt
          : database().numbers(std::string("SELECT id FROM ") + nameOf(table) +
                               " WHERE key BETWEEN x'" + hexadecimal(key->second) + "' AND x'" +
                               hexadecimal(key->second + last) + "' ORDER BY id");
  if (ids) {
    database().forEachRow(queryOf(table), *ids, readIfOfSession);
  } else {
    database().forEachRow(queryOf(table), readIfOfSession);
  }
}

std::optional<std::vector<std::string>> CollectorStore::find(const SessionChoice& choice) {
  for (const auto table : {Table::Environments, Table::Events}) {
    const bool isFound = choice.isLast() ? findLast(table) : findByKey(table, choice);
    if (!isFound) {
      return std::nullopt;
    }
  }
  if (choice.isLast() && keys_.empty()) {
    return std::nullopt;  // Perhaps there are sessions whose records have no time.
  }
  std::vector<std::string> sessions;
  for (const auto& [session, key] : keys_) {
    sessions.push_back(session);
  }
  return sessions;
}

/// Goes from session to session in the index of keys, without reading all their records. Returns
/// false if the index is damaged.
bool CollectorStore::findByKey(Table table, const SessionChoice& choice) {
  Statement next(database().connection().handle(), std::string("SELECT key, session FROM ") +
                                                       nameOf(table) +
                                                       " WHERE key > ? ORDER BY key LIMIT 1");
  std::string position;
  int code = SQLITE_ROW;
  for (next.restart(position); (code = next.step()) == SQLITE_ROW; next.restart(position)) {
    const auto key = next.blob(0);
    const auto session = next.text(1);
    if (key <= position) {
      return false;
    }
    if (session.empty()) {  // The key has no part for a session.
      position = key;
      continue;
    }
    position = key.substr(0, sessionBytes);
    if (choice.begins(session)) {
      keys_.emplace(session, position);
    }
    position.append(keyBytes - sessionBytes, '\xff');
  }
  return code == SQLITE_DONE;
}

/// Goes back in time until no older record can be the first one of the last session. Returns false
/// if the index is damaged.
bool CollectorStore::findLast(Table table) {
  Statement rows(database().connection().handle(),
                 std::string("SELECT session, time, key FROM ") + nameOf(table) +
                     " WHERE time IS NOT NULL AND session IS NOT NULL ORDER BY time DESC");
  std::string latest;
  int code = rows.step();
  for (; code == SQLITE_ROW && (latest.empty() || rows.text(1) >= latest); code = rows.step()) {
    const std::string session(rows.text(0));
    if (keys_.emplace(session, rows.blob(2).substr(0, sessionBytes)).second) {
      latest = std::max(latest, firstTime(session));
    }
  }
  return code == SQLITE_DONE || code == SQLITE_ROW;
}

/// The earliest time of the session's records; empty if no record has a valid time.
std::string CollectorStore::firstTime(const std::string& session) {
  std::string first;
  std::string last;
  for (const auto table : {Table::Environments, Table::Events}) {
    forEachRecord(session, table, [&](const Row& row) {
      widen(first, last, row.time);
      return true;
    });
  }
  return first;
}

std::optional<std::int64_t> CollectorStore::refused() {
  return numberOf(database(), "SELECT ifnull(sum(count), 0) FROM refused");
}

}  // namespace qel::records
