#include "benchmarks/RawDatabase.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string_view>

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include "benchmarks/Workload.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {
namespace {

void require(bool succeeded, std::string_view what) {
  if (!succeeded) {
    std::cerr << "benchmarks: " << what << '\n';
    std::abort();
  }
}

std::string creationOf(const std::string& table, bool isSupport) {
  return "CREATE TABLE IF NOT EXISTS " + table +
         " (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT" +
         (isSupport ? ", timestamp_utc DATETIME NOT NULL "
                      "DEFAULT(STRFTIME('%Y-%m-%d %H:%M:%S', 'NOW')))"
                    : ")");
}

void writeToDisk(const std::filesystem::path& file) {
  const int descriptor = ::open(file.c_str(), O_RDONLY);
  require(descriptor >= 0 && ::fsync(descriptor) == 0 && ::close(descriptor) == 0, "fsync");
}

}  // namespace

void RawDatabase::Close::operator()(sqlite3* database) const { sqlite3_close(database); }

RawDatabase::RawDatabase(const std::filesystem::path& directory, const std::string& name) {
  sqlite3* database = nullptr;
  const int code =
      sqlite3_open_v2((directory / name).c_str(), &database,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  database_.reset(database);
  require(code == SQLITE_OK, "opening a database");
  run("PRAGMA auto_vacuum = INCREMENTAL;");
  run(creationOf("Items", name == support));
  run(creationOf("Environments", name == support));
}

void RawDatabase::run(const std::string& statement) {
  sqlite3_stmt* prepared = nullptr;
  sqlite3_prepare_v2(database_.get(), statement.c_str(), static_cast<int>(statement.size()) + 1,
                     &prepared, nullptr);
  int code = SQLITE_ROW;
  while (code == SQLITE_ROW) {
    code = sqlite3_step(prepared);
  }
  require(code == SQLITE_DONE, sqlite3_errmsg(database_.get()));
  sqlite3_finalize(prepared);
}

void RawDatabase::runAll(const std::vector<std::string>& statements) {
  for (const auto& statement : statements) {
    run(statement);
  }
}

void RawDatabase::runTogether(const std::vector<std::string>& statements) {
  run("BEGIN IMMEDIATE");
  runAll(statements);
  run("COMMIT");
}

RawDatabase::RowMap RawDatabase::rows(const std::string& table) {
  RowMap rows;
  sqlite3_stmt* prepared = nullptr;
  sqlite3_prepare_v2(database_.get(), ("SELECT * FROM " + table).c_str(), -1, &prepared, nullptr);
  int code = sqlite3_step(prepared);
  for (; code == SQLITE_ROW; code = sqlite3_step(prepared)) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(prepared, 1));
    rows.emplace_hint(
        rows.end(), std::piecewise_construct,
        std::forward_as_tuple(sqlite3_column_int(prepared, 0)),
        std::forward_as_tuple(text, static_cast<std::size_t>(sqlite3_column_bytes(prepared, 1))));
  }
  require(code == SQLITE_DONE, sqlite3_errmsg(database_.get()));
  sqlite3_finalize(prepared);
  return rows;
}

std::vector<std::string> insertStatements(int count) {
  identifyProcess();
  std::vector<std::string> statements;
  for (int number = 0; number < count; ++number) {
    statements.push_back("INSERT into Items(json) VALUES ('" + makeItem(number)->toJson() + "')");
  }
  return statements;
}

std::vector<std::vector<int>> deletedIds(int count) {
  constexpr int batchSize = 3'300;
  std::vector<std::vector<int>> batches;
  for (int id = 1; id <= count; ++id) {
    if (batches.empty() || batches.back().size() == batchSize) {
      batches.emplace_back();
    }
    batches.back().push_back(id);
  }
  return batches;
}

std::vector<std::string> deleteStatements(int count) {
  std::vector<std::string> statements;
  for (const auto& ids : deletedIds(count)) {
    std::string list;
    for (const int id : ids) {
      list += (list.empty() ? "" : ",") + std::to_string(id);
    }
    statements.push_back("DELETE FROM Items WHERE ID IN (" + list + ")");
    statements.emplace_back("DELETE FROM sqlite_sequence WHERE name = 'Items'");
  }
  statements.emplace_back("PRAGMA incremental_vacuum;");
  return statements;
}

void makeDatabase(const std::filesystem::path& directory, int rows) {
  RawDatabase(directory, RawDatabase::sending).runTogether(insertStatements(rows));
  writeToDisk(directory / RawDatabase::sending);
}

void copyDatabase(int rows, const std::filesystem::path& directory) {
  static std::map<int, test::TemporaryDirectory> made;
  const auto [entry, isNew] = made.try_emplace(rows);
  if (isNew) {
    makeDatabase(entry->second.path(), rows);
  }
  std::filesystem::copy(entry->second.path() / RawDatabase::sending, directory);
  writeToDisk(directory / RawDatabase::sending);
}

}  // namespace qel::benchmarks
