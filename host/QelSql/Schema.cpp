#include "host/QelSql/Schema.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace qel::db::sql {
namespace {

constexpr std::string_view tableCreation = "CREATE TABLE IF NOT EXISTS ";
constexpr std::string_view vacuumChoice = "PRAGMA AUTO_VACUUM = INCREMENTAL";

/// VACUUM takes about half a second for so many bytes, and its transaction twice the file's size.
constexpr std::uintmax_t largestVacuum = std::uintmax_t{64} << 20U;
constexpr std::chrono::minutes vacuumInterval{10};

/// Well below the highest ID that fits an `int`, which readers of the rows have for it.
constexpr std::int64_t highestUsableId = 2'000'000'000;

bool startsWithKeywords(std::string_view statement, std::string_view upperCase) {
  return statement.size() >= upperCase.size() &&
         std::equal(upperCase.begin(), upperCase.end(), statement.begin(), [](char a, char b) {
           return a == std::toupper(static_cast<unsigned char>(b));
         });
}

std::string tableIn(const std::string& creation) {
  const auto definition = creation.substr(tableCreation.size());
  return definition.substr(0, definition.find_first_of(" ("));
}

/// Yields 1 if rows can be kept in what the file has under the name, 0 if not, and no row if it has
/// nothing there.
std::string questionWhetherServes(const std::string& table) {
  return "WITH columns AS (SELECT * FROM pragma_table_info('" + table +
         "')) SELECT type = 'table'"
         " AND EXISTS (SELECT * FROM columns WHERE cid = 0 AND name = 'ID' COLLATE NOCASE"
         " AND upper(type) = 'INTEGER' AND pk)"
         " AND EXISTS (SELECT * FROM columns WHERE cid = 1 AND name = 'json' COLLATE NOCASE)"
         " AND NOT EXISTS (SELECT * FROM columns WHERE cid > 0 AND pk)"
         " AND NOT EXISTS"
         " (SELECT * FROM columns WHERE cid > 1 AND \"notnull\" AND dflt_value IS NULL)"
         " FROM sqlite_schema WHERE name = '" +
         table + "' COLLATE NOCASE AND type <> 'trigger'";
}

}  // namespace

Schema::Schema(std::filesystem::path file, const DatabaseLog& log)
    : file_(std::move(file)), log_(log) {}

bool Schema::isMadeBy(std::string_view statement) {
  return startsWithKeywords(statement, tableCreation) ||
         startsWithKeywords(statement, vacuumChoice);
}

void Schema::add(const std::string& statement) {
  if (std::ranges::count(statements_, statement) == 0) {
    statements_.push_back(statement);
  }
}

Outcome Schema::apply(Connection& connection) {
  for (; applied_ < statements_.size(); ++applied_) {
    Outcome outcome = applyStatement(connection, statements_[applied_]);
    if (!outcome.isDone()) {
      return outcome;
    }
  }
  return idsBeginAbove_ > 0 ? keepIdsAbove(connection, idsBeginAbove_) : Outcome{};
}

Outcome Schema::applyStatement(Connection& connection, const std::string& statement) {
  return startsWithKeywords(statement, tableCreation) ? createTable(connection, statement)
                                                      : chooseVacuum(connection, statement);
}

Outcome Schema::createTable(Connection& connection, const std::string& statement) {
  const std::string table = tableIn(statement);
  Outcome outcome = connection.run(questionWhetherServes(table));
  if (!outcome.isDone()) {
    return outcome;
  }
  const bool exists = !outcome.rows.empty();
  if (exists && outcome.rows != Result::Rows{{"1"}}) {
    return failed(Outcome::Status::FileIsCorrupt,
                  "it has something else in place of the table " + table);
  }
  outcome =
      exists ? noteIdFrom(connection, "SELECT max(ID) FROM " + table) : connection.run(statement);
  if (outcome.isDone() && statement.find("AUTOINCREMENT") != std::string::npos) {
    countedTables_.push_back(table);
  }
  return outcome;
}

/// SQLite takes the choice for an empty file, and for one that shrinks by itself.
Outcome Schema::chooseVacuum(Connection& connection, const std::string& statement) {
  const std::string question = "PRAGMA auto_vacuum";
  const Result::Rows chosen{{"2"}};
  Outcome outcome = connection.run(question);
  if (!outcome.isDone() || outcome.rows == chosen) {
    return outcome;
  }
  outcome = connection.run(statement);
  if (outcome.isDone()) {
    outcome = connection.run(question);
    cannotShrink_ = outcome.rows != chosen;
  }
  return outcome;
}

/// Deleting a table's entry in `sqlite_sequence` makes its IDs begin at 1 again, so the entry is
/// looked for each time.
Outcome Schema::keepIdsAbove(Connection& connection, std::int64_t id) const {
  for (const auto& table : countedTables_) {
    Outcome found = connection.run("SELECT 1 FROM sqlite_sequence WHERE name = '" + table + "'");
    if (found.isDone() && found.rows.empty()) {
      found = connection.run("INSERT INTO sqlite_sequence(name, seq) VALUES ('" + table + "', " +
                             std::to_string(id) + ")");
    }
    if (!found.isDone()) {
      return found;
    }
  }
  return {};
}

void Schema::makeShrinkable(Connection& connection) {
  const auto now = Clock::now();
  if (!cannotShrink_ || now < nextVacuum_) {
    return;
  }
  nextVacuum_ = now + vacuumInterval;
  if (!hasRoomForVacuum()) {
    return;
  }
  Outcome outcome = connection.run("PRAGMA auto_vacuum = INCREMENTAL");
  if (outcome.isDone()) {
    outcome = connection.run("VACUUM");
  }
  cannotShrink_ = !outcome.isDone();
  if (cannotShrink_) {
    log_.warn(" cannot be made to shrink yet: " + outcome.reasonToBeLogged);
  }
}

bool Schema::hasRoomForVacuum() const {
  std::error_code error;
  const auto size = std::filesystem::file_size(file_, error);
  if (error || size > largestVacuum) {
    return false;
  }
  const auto space = std::filesystem::space(file_, error);
  return !error && space.available / 2 > size;
}

void Schema::noteId(std::int64_t id) {
  if (id <= highestUsableId) {
    highestId_ = std::max(highestId_, id);
  }
}

void Schema::noteHighestId(Connection& connection) {
  noteIdFrom(connection, "SELECT max(seq) FROM sqlite_sequence");
}

Outcome Schema::noteIdFrom(Connection& connection, const std::string& question) {
  Outcome outcome = connection.run(question);
  if (outcome.isDone()) {
    noteId(std::strtoll(outcome.rows.at(0).at(0).c_str(), nullptr, 10));
  }
  return outcome;
}

void Schema::restart() {
  applied_ = 0;
  countedTables_.clear();
  cannotShrink_ = false;
  idsBeginAbove_ = highestId_;
}

}  // namespace qel::db::sql
