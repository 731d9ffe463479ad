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

/// For a file of this many bytes, VACUUM takes about half a second, and twice the file's size on
/// the disk.
constexpr std::uintmax_t largestVacuum = std::uintmax_t{64} << 20U;
constexpr std::chrono::minutes vacuumInterval{10};

/// Far below the largest `int`, because readers of the rows store IDs in an `int`.
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

/// A query whose result is 1 if the file's table fits the table in the schema "ours", and 0 if not.
/// The columns of "ours" must come first, in the same order. Extra columns must be nullable or have
/// a default. The primary key must not have a separate index.
std::string questionWhetherServes(const std::string& table) {
  const std::string ours = "pragma_table_info('" + table + "', 'ours')";
  const std::string file = "pragma_table_info('" + table + "', 'main')";
  return "SELECT type = 'table' AND NOT EXISTS (SELECT * FROM " + ours + " AS ours LEFT JOIN " +
         file +
         " AS file ON file.cid = ours.cid AND file.name = ours.name COLLATE NOCASE"
         " AND file.pk = ours.pk WHERE file.name IS NULL)"
         " AND NOT EXISTS (SELECT * FROM pragma_index_list('" +
         table + "', 'main') WHERE origin = 'pk') AND NOT EXISTS (SELECT * FROM " + file +
         " WHERE cid >= (SELECT count(*) FROM " + ours +
         ") AND \"notnull\" AND dflt_value IS NULL) FROM main.sqlite_schema WHERE name = '" +
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

/// SQLite keeps the text of the statement that created a table, from the table's name on. For a
/// table of this program, the text is that of `statement`.
Outcome Schema::createTable(Connection& connection, const std::string& statement) {
  const std::string table = tableIn(statement);
  Outcome outcome = connection.run("SELECT sql FROM sqlite_schema WHERE name = '" + table +
                                   "' COLLATE NOCASE AND type <> 'trigger'");
  if (!outcome.isDone()) {
    return outcome;
  }
  if (outcome.rows.empty()) {
    outcome = connection.run(statement);
  } else if (outcome.rows !=
             Result::Rows{{"CREATE TABLE " + statement.substr(tableCreation.size())}}) {
    outcome = compare(connection, statement);
  }
  const bool hasCounter = statement.find("AUTOINCREMENT") != std::string::npos;
  return outcome.isDone() && hasCounter ? noteCounted(connection, table) : outcome;
}

/// In a table with AUTOINCREMENT, `rowid` is the primary key, whatever the key column's name is.
Outcome Schema::noteCounted(Connection& connection, const std::string& table) {
  Outcome outcome = connection.run("SELECT max(rowid) FROM " + table);
  if (outcome.isDone()) {
    noteId(std::strtoll(outcome.rows.at(0).at(0).c_str(), nullptr, 10));
    countedTables_.push_back(table);
  }
  return outcome;
}

/// Creates the table in memory, so that SQLite itself parses the columns from the statement.
Outcome Schema::compare(Connection& connection, const std::string& statement) {
  connection.run("DETACH ours");  // may remain from an attempt that ran out of memory
  Outcome outcome = connection.run("ATTACH ':memory:' AS ours");
  if (outcome.isDone()) {
    outcome = connection.run(std::string(tableCreation) + "ours." +
                             statement.substr(tableCreation.size()));
  }
  if (outcome.isDone()) {
    outcome = connection.run(questionWhetherServes(tableIn(statement)));
  }
  connection.run("DETACH ours");
  if (outcome.isDone() && outcome.rows != Result::Rows{{"1"}}) {
    return failed(Outcome::Status::FileIsCorrupt,
                  "it has something else in place of the table " + tableIn(statement));
  }
  return outcome;
}

/// Runs the `auto_vacuum` statement. SQLite applies it only to an empty file, or to a file with
/// `auto_vacuum = FULL`.
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

/// If a table has no entry in `sqlite_sequence`, its IDs start at 1 again. So every call checks the
/// entry.
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

Outcome Schema::makeShrinkable(Connection& connection) {
  const auto now = Clock::now();
  if (!cannotShrink_ || now < nextVacuum_) {
    return {};
  }
  nextVacuum_ = now + vacuumInterval;
  if (!hasRoomForVacuum()) {
    return {};
  }
  Outcome outcome = connection.run("PRAGMA auto_vacuum = INCREMENTAL");
  if (outcome.isDone()) {
    outcome = connection.run("VACUUM");
  }
  cannotShrink_ = !outcome.isDone();
  if (cannotShrink_) {
    log_.warn(" cannot be made to shrink yet: " + outcome.reasonToBeLogged);
  }
  return outcome.status == Outcome::Status::FileIsCorrupt ? outcome : Outcome{};
}

/// VACUUM writes its temporary copy to the directory for temporary files, and its journal next to
/// the database file.
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

void Schema::restart() {
  applied_ = 0;
  countedTables_.clear();
  cannotShrink_ = false;
  idsBeginAbove_ = highestId_;
}

}  // namespace qel::db::sql
