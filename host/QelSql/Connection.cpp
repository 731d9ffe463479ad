#include "host/QelSql/Connection.h"

#include <limits>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <sqlite3.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::db::sql {
namespace {

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

int waitWhileBusy(void* busyWait, int /*attempts*/) {
  return static_cast<BusyWait*>(busyWait)->waitAgain() ? 1 : 0;
}

/// How many instructions of a statement SQLite runs, in well under a millisecond, before it asks
/// whether the thread must stop.
constexpr int instructionsUntilCheck = 1000;

int mustStop(void* /*unused*/) { return utilities::Patience::mustStop() ? 1 : 0; }

/// Returns false if SQLite ran out of memory.
bool readRow(sqlite3_stmt& statement, int columns, std::vector<std::string>& row) {
  row.reserve(static_cast<std::size_t>(columns));
  for (int column = 0; column < columns; ++column) {
    if (sqlite3_column_type(&statement, column) == SQLITE_NULL) {
      row.emplace_back();
      continue;
    }
    const unsigned char* text = sqlite3_column_text(&statement, column);
    if (text == nullptr) {
      return false;
    }
    row.emplace_back(reinterpret_cast<const char*>(text),
                     static_cast<std::size_t>(sqlite3_column_bytes(&statement, column)));
  }
  return true;
}

}  // namespace

Outcome failed(Outcome::Status status, const std::string& reason) {
  return {status, reason, reason, {}};
}

void Connection::Close::operator()(sqlite3* database) const { sqlite3_close(database); }

Connection::Connection(std::filesystem::path file, BusyWait& busyWait)
    : file_(std::move(file)), busyWait_(busyWait) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(utilities::utf8FromPath(file_).c_str(), &database,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  database_.reset(database);
  if (!database_) {
    throw qel::exception(sqlite3_errstr(code));
  }
  if (code != SQLITE_OK) {
    throw qel::exception(failure().reason);
  }
  if (sqlite3_db_readonly(database, "main") != 0) {
    throw qel::exception("the file is not writable");
  }
  sqlite3_busy_handler(database, waitWhileBusy, &busyWait_);
  sqlite3_progress_handler(database, instructionsUntilCheck, mustStop, nullptr);
}

Outcome Connection::check() {
  run("BEGIN");  // The first read acquires a lock, so the size stays the same.
  Outcome outcome =
      run("SELECT page_count * page_size FROM pragma_page_count, pragma_page_size, "
          "(SELECT count(*) FROM sqlite_schema)");
  const Outcome journal = run("PRAGMA journal_mode");
  std::error_code ignored;
  const auto size = std::filesystem::file_size(file_, ignored);
  rollBack();
  if (!outcome.isDone()) {
    return outcome;
  }
  // In write-ahead mode the newest pages may exist only in the log.
  if (journal.rows != Result::Rows{{"wal"}} && std::stoull(outcome.rows.at(0).at(0)) > size) {
    return failed(Outcome::Status::FileIsCorrupt, "the file is truncated");
  }
  return {};
}

Outcome Connection::run(const std::string& statement) {
  Outcome outcome = prepareAndStep(statement);
  busyWait_.end();
  return outcome;
}

Outcome Connection::prepareAndStep(const std::string& statement) {
  if (statement.find('\0') != std::string::npos) {
    return failed(Outcome::Status::Failed, "the statement holds a NUL character");
  }
  if (statement.size() >= std::numeric_limits<int>::max()) {
    return failed(Outcome::Status::Failed, "the statement is too long");
  }
  // If the length includes the terminating NUL, SQLite does not copy the statement.
  const int length = static_cast<int>(statement.size()) + 1;
  sqlite3_stmt* prepared = nullptr;
  const char* rest = nullptr;
  const int code = sqlite3_prepare_v2(database_.get(), statement.c_str(), length, &prepared, &rest);
  const std::unique_ptr<sqlite3_stmt, Finalize> owner(prepared);
  if (code != SQLITE_OK) {
    return failure();
  }
  if (prepared == nullptr) {
    return failed(Outcome::Status::Failed, "the statement is empty");
  }
  if (std::string_view(rest).find_first_not_of(" \t\r\n\f;") != std::string_view::npos) {
    return failed(Outcome::Status::Failed, "text follows the statement");
  }
  return stepToEnd(*prepared);
}

Outcome Connection::stepToEnd(sqlite3_stmt& statement) {
  const int columns = sqlite3_column_count(&statement);
  Outcome outcome;
  int code = sqlite3_step(&statement);
  for (; code == SQLITE_ROW; code = sqlite3_step(&statement)) {
    if (columns > 0 && !readRow(statement, columns, outcome.rows.emplace_back())) {
      return failure();
    }
  }
  return code == SQLITE_DONE ? std::move(outcome) : failure();
}

std::int64_t Connection::lastInsertedId() const {
  return sqlite3_last_insert_rowid(database_.get());
}

void Connection::rollBack() noexcept {
  if (sqlite3_get_autocommit(database_.get()) == 0) {
    sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
  hasToRollBack_ = sqlite3_get_autocommit(database_.get()) == 0;
}

void Connection::retryRollBack() noexcept {
  if (hasToRollBack_) {
    rollBack();
  }
}

Outcome Connection::failure() const {
  sqlite3* database = database_.get();
  const int code = sqlite3_errcode(database) & 0xff;
  Outcome outcome{Outcome::Status::Failed, sqlite3_errmsg(database), {}, {}};
  if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) {
    outcome.status = Outcome::Status::FileIsCorrupt;
  }
  if (code == SQLITE_BUSY) {
    outcome.status = Outcome::Status::Busy;
    outcome.reason += " by another connection, and this thread waits no longer";
  }
  const int systemError = sqlite3_system_errno(database);
  if ((code == SQLITE_CANTOPEN || code == SQLITE_IOERR) && systemError != 0) {
    outcome.reason += ": " + utilities::systemMessage({systemError, std::system_category()});
  }
  // If an error has a position in the statement, SQLite's message quotes the text there.
  const int place = sqlite3_error_offset(database);
  outcome.reasonToBeLogged =
      place < 0 ? outcome.reason : "error at byte " + std::to_string(place) + " of the statement";
  return outcome;
}

}  // namespace qel::db::sql
