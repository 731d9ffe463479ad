#include "tools/records/ReadOnlyDatabase.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>
#include <utility>

#include <sqlite3.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/records/PrivateCopy.h"

namespace qel::records {
namespace {

constexpr int busyTimeoutInMs = 5000;
constexpr std::int64_t rowsBetweenReports = 4096;
constexpr int pagesBetweenChecks = 1024;

/// Whether other rows may still be readable after this error.
bool isDamage(int code) {
  const int kind = code & 0xff;
  return kind == SQLITE_CORRUPT || kind == SQLITE_IOERR || kind == SQLITE_TOOBIG;
}

/// Whether the file is in write-ahead mode, in which even a reader writes files into the directory.
bool isInWriteAheadMode(const std::filesystem::path& file) {
  constexpr std::size_t placeOfReadVersion = 19;
  std::array<char, placeOfReadVersion + 1> header{};
  std::ifstream(file, std::ios::binary).read(header.data(), header.size());
  return header[placeOfReadVersion] == 2;
}

/// The maximum number of a client's rows that fit into the file.
std::int64_t mostRows(const std::filesystem::path& file) {
  constexpr std::uintmax_t smallestRow = 32;
  std::error_code unreadable;
  const auto size = std::filesystem::file_size(file, unreadable);
  return unreadable ? 0 : static_cast<std::int64_t>(size / smallestRow);
}

}  // namespace

class ReadOnlyDatabase::Statement {
 public:
  Statement(sqlite3* database, const std::string& text) {
    code_ = sqlite3_prepare_v2(database, text.c_str(), -1, &statement_, nullptr);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  /// The SQLite result code of compiling the statement.
  int code() const { return code_; }
  /// Restarts the statement with a value for its first parameter.
  void restart(std::int64_t parameter) {
    sqlite3_reset(statement_);
    sqlite3_bind_int64(statement_, 1, parameter);
  }
  int step() { return code_ == SQLITE_OK ? sqlite3_step(statement_) : code_; }

  bool isNull(int column) { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
  std::int64_t number(int column) { return sqlite3_column_int64(statement_, column); }
  std::string_view text(int column) {
    const auto* const text = sqlite3_column_text(statement_, column);
    return text == nullptr
               ? std::string_view()
               : std::string_view(
                     reinterpret_cast<const char*>(text),
                     static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  }

 private:
  sqlite3_stmt* statement_ = nullptr;
  int code_;
};

void ReadOnlyDatabase::Close::operator()(sqlite3* database) const { sqlite3_close(database); }

ReadOnlyDatabase::ReadOnlyDatabase(std::filesystem::path file, Progress progress)
    : file_(std::move(file)), progress_(std::move(progress)) {
  readsCopy_ = isInWriteAheadMode(file_);
  if (!readsCopy_) {
    open(utilities::utf8FromPath(file_), SQLITE_OPEN_READONLY);
    readsCopy_ = !readSchema();
  }
  if (readsCopy_) {
    openCopy();
  }
}

ReadOnlyDatabase::~ReadOnlyDatabase() = default;

/// Lets SQLite roll back the interrupted transaction in a private copy, and moves the result into a
/// temporary database. The system removes that database when this program ends, however it ends.
void ReadOnlyDatabase::openCopy() {
  copy_ = std::make_unique<PrivateCopy>(file_);
  open(utilities::utf8FromPath(copy_->file()), SQLITE_OPEN_READWRITE);
  if (!readSchema()) {
    fail(SQLITE_READONLY);
  }
  auto finished = std::move(database_);
  open("", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  std::unique_ptr<sqlite3_backup, decltype(&sqlite3_backup_finish)> transfer(
      sqlite3_backup_init(database_.get(), "main", finished.get(), "main"), sqlite3_backup_finish);
  while (sqlite3_backup_step(transfer.get(), pagesBetweenChecks) == SQLITE_OK) {
    tools::DelayedInterruption::check();
  }
  const int code = sqlite3_backup_finish(transfer.release());
  if (code != SQLITE_OK && whyUnreadable_.empty()) {
    fail(code);
  }
  finished.reset();
  copy_.reset();
}

/// The name is UTF-8, or empty for a temporary database.
void ReadOnlyDatabase::open(const std::string& name, int mode) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(name.c_str(), &database, mode | SQLITE_OPEN_NOMUTEX, nullptr);
  database_.reset(database);
  if (code != SQLITE_OK) {
    fail(code);
  }
  sqlite3_busy_timeout(database, busyTimeoutInMs);
  // An untrusted schema must not run code.
  for (const int setting : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_TRIGGER,
                            SQLITE_DBCONFIG_ENABLE_VIEW}) {
    sqlite3_db_config(database, setting, 0, nullptr);
  }
  // Lets SQLite read a truncated file. The connection remains read-only.
  sqlite3_db_config(database, SQLITE_DBCONFIG_WRITABLE_SCHEMA, 1, nullptr);
  sqlite3_exec(database, "PRAGMA cell_size_check = ON", nullptr, nullptr, nullptr);
}

/// Reads the schema. Returns false if an interrupted transaction must be rolled back first.
bool ReadOnlyDatabase::readSchema() {
  const int code = Statement(database_.get(), "SELECT count(*) FROM sqlite_schema").step();
  const int kind = code & 0xff;
  if (kind == SQLITE_READONLY) {
    return false;
  }
  if (code != SQLITE_ROW) {
    const bool rollbackFailed = readsCopy_ && kind == SQLITE_IOERR;
    if (rollbackFailed || (code != SQLITE_NOTADB && !isDamage(code))) {
      fail(code);
    }
    whyUnreadable_ = lastError();
  }
  return true;
}

void ReadOnlyDatabase::forEachRow(const std::string& table, const RowReader& reader) {
  Statement rows(database_.get(), "SELECT ID, json FROM " + table + " WHERE ID > ? ORDER BY ID");
  Flaws found;
  if (rows.code() == SQLITE_OK) {
    found = read(rows, table, reader);
  } else if (rows.code() == SQLITE_BUSY) {
    fail(rows.code());
  } else if (mostRows(file_) > 0) {
    found.reason = whyUnreadable_.empty() ? lastError() : whyUnreadable_;
  }
  Flaws& flaws = flaws_[table];
  flaws.unreadable = std::max(flaws.unreadable, found.unreadable);
  flaws.unintelligible = std::max(flaws.unintelligible, found.unintelligible);
  flaws.counted = found.counted;
  flaws.reason = found.reason;
}

/// Passes the row to `reader`, counts its flaws and returns its ID.
std::int64_t ReadOnlyDatabase::readRow(Statement& row, const RowReader& reader, Flaws& flaws) {
  const auto id = row.number(0);
  const bool null = row.isNull(1);
  const auto text = row.text(1);
  if (text.data() == nullptr && !null) {
    ++flaws.unreadable;
  } else if (!reader(id, text)) {
    ++flaws.unintelligible;
  }
  return id;
}

ReadOnlyDatabase::Flaws ReadOnlyDatabase::read(Statement& rows, const std::string& table,
                                               const RowReader& reader) const {
  Flaws flaws;
  const auto known = highestId(table);
  const auto highest = known.value_or(mostRows(file_));
  flaws.counted = known.has_value();
  auto stepsLeft = 2 * mostRows(file_);  // The pages of a damaged file can form a cycle.
  std::int64_t position = 0;             // All rows up to this ID have been read.
  const auto report = [&] {
    if (stepsLeft % rowsBetweenReports != 0) {
      return;
    }
    tools::DelayedInterruption::check();
    if (progress_) {
      progress_(static_cast<double>(position) / static_cast<double>(highest));
    }
  };
  for (;;) {
    rows.restart(position);
    int code = rows.step();
    for (; code == SQLITE_ROW && stepsLeft > 0; code = rows.step(), --stepsLeft) {
      const auto id = readRow(rows, reader, flaws);
      if (id > position && id <= highest) {  // Otherwise the ID itself is damaged.
        position = id;
      }
      report();
    }
    if (code == SQLITE_DONE || code == SQLITE_ROW) {
      return flaws;
    }
    if (!isDamage(code)) {
      fail(code);
    }
    ++flaws.unreadable;
    if (position >= highest || --stepsLeft < 0) {
      return flaws;
    }
    ++position;  // The next row, or a page on the path to it, is damaged; later rows may be intact.
    report();
  }
}

/// The highest ID in the table; `std::nullopt` if the file is too damaged to contain it.
std::optional<std::int64_t> ReadOnlyDatabase::highestId(const std::string& table) const {
  for (const auto& question : {"SELECT seq FROM sqlite_sequence WHERE name = '" + table + "'",
                               "SELECT max(ID) FROM " + table}) {
    Statement answer(database_.get(), question);
    if (answer.step() == SQLITE_ROW && answer.number(0) > 0) {
      return answer.number(0);
    }
  }
  return std::nullopt;
}

bool ReadOnlyDatabase::isReadWholly() const {
  return std::all_of(flaws_.begin(), flaws_.end(), [](const auto& flawsOfTable) {
    return flawsOfTable.second.reason.empty() && flawsOfTable.second.unreadable == 0;
  });
}

std::vector<std::string> ReadOnlyDatabase::remarks() const {
  const std::string name = utilities::utf8FromPath(file_.filename());
  std::vector<std::string> lines;
  if (readsCopy_) {
    lines.push_back(name +
                    (isInWriteAheadMode(file_) ? " is in write-ahead mode"
                                               : " has writes that are not finished") +
                    ": a private copy of it was read");
  }
  const auto add = [&](const std::string& what) { lines.push_back(name + ": " + what); };
  for (const auto& [table, flaws] : flaws_) {
    if (!flaws.reason.empty()) {
      add("the table " + table + " cannot be read: " + flaws.reason);
    }
    if (flaws.unreadable > 0) {
      add("the file is damaged: " +
          (flaws.counted ? "up to " + std::to_string(flaws.unreadable) : "some") + " rows of " +
          table + " are skipped");
    }
    if (flaws.unintelligible > 0) {
      add(std::to_string(flaws.unintelligible) + " rows of " + table +
          " hold no record of a client and are skipped");
    }
  }
  return lines;
}

/// SQLite's message. It can quote text from an untrusted schema, so it is reduced to printable
/// ASCII.
std::string ReadOnlyDatabase::lastError() const {
  std::string message = sqlite3_errmsg(database_.get());
  std::replace_if(
      message.begin(), message.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
  return message;
}

void ReadOnlyDatabase::fail(int code) const {
  const std::string file = utilities::utf8FromPath(file_);
  if ((code & 0xff) == SQLITE_BUSY) {
    throw qel::exception(file + " is locked by another program; try again later");
  }
  const int systemError = database_ ? sqlite3_system_errno(database_.get()) : 0;
  throw qel::exception(
      "cannot read " + file + ": " + (database_ ? lastError() : sqlite3_errstr(code)) +
      (systemError == 0 ? ""
                        : ": " + utilities::systemMessage({systemError, std::system_category()})));
}

}  // namespace qel::records
