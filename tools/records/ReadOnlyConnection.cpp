#include "tools/records/ReadOnlyConnection.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>
#include <utility>

#include <sqlite3.h>

#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/DelayedInterruption.h"
#include "tools/records/PrivateCopy.h"
#include "tools/records/Statement.h"

namespace qel::records {
namespace {

constexpr int busyTimeoutInMs = 5000;
constexpr int pagesBetweenChecks = 1024;

/// Whether the file is in write-ahead mode.
bool isInWriteAheadMode(const std::filesystem::path& file) {
  constexpr std::size_t placeOfReadVersion = 19;
  std::array<char, placeOfReadVersion + 1> header{};
  std::ifstream(file, std::ios::binary).read(header.data(), header.size());
  return header[placeOfReadVersion] == 2;
}

bool hasFile(std::filesystem::path file, const char* suffix) {
  std::error_code unknown;
  return std::filesystem::exists(file += suffix, unknown);
}

/// The file as a URI with parameters for SQLite.
std::string uriOf(const std::filesystem::path& file, const char* parameters) {
  auto path = utilities::utf8FromPath(std::filesystem::absolute(file));
  std::replace(path.begin(), path.end(),
               static_cast<char>(std::filesystem::path::preferred_separator), '/');
  std::string uri = path.starts_with('/') ? "file://" : "file:///";
  for (const char byte : path) {
    switch (byte) {
      case '%':
        uri += "%25";
        break;
      case '?':
        uri += "%3f";
        break;
      case '#':
        uri += "%23";
        break;
      default:
        uri += byte;
    }
  }
  return uri + parameters;
}

std::filesystem::file_time_type timeOfChange(const std::filesystem::path& file) {
  std::error_code unknown;
  return std::filesystem::last_write_time(file, unknown);
}

}  // namespace

bool isDamage(int code) {
  const int kind = code & 0xff;
  return kind == SQLITE_CORRUPT || kind == SQLITE_IOERR || kind == SQLITE_TOOBIG;
}

ReadOnlyConnection::~ReadOnlyConnection() = default;

void ReadOnlyConnection::Close::operator()(sqlite3* database) const { sqlite3_close(database); }

ReadOnlyConnection::ReadOnlyConnection(std::filesystem::path file)
    : file_(std::move(file)), changed_(timeOfChange(file_)) {
  openInPlace();
  if (access_ == Access::Copy || !readSchema()) {
    access_ = Access::Copy;
    openCopy();
  }
}

/// In write-ahead mode, SQLite uses two more files. They exist as long as a program has the file
/// open, and a reader must not create them. If there are none, nobody writes, and the file can be
/// read without locks.
void ReadOnlyConnection::openInPlace() {
  if (!isInWriteAheadMode(file_)) {
    open(utilities::utf8FromPath(file_), SQLITE_OPEN_READONLY);
  } else if (!hasFile(file_, db::sql::walSuffix)) {
    access_ = Access::WithoutLocks;
    open(uriOf(file_, "?immutable=1"), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  } else if (hasFile(file_, db::sql::sharedMemorySuffix)) {
    open(uriOf(file_, "?readonly_shm=1"), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  } else {
    access_ = Access::Copy;
  }
}

/// Lets SQLite roll back the interrupted transaction in a private copy, and moves the result into a
/// temporary database. The system removes that database when this program ends, however it ends.
void ReadOnlyConnection::openCopy() {
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
void ReadOnlyConnection::open(const std::string& name, int mode) {
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
bool ReadOnlyConnection::readSchema() {
  const int code = Statement(database_.get(), "SELECT count(*) FROM sqlite_schema").step();
  const int kind = code & 0xff;
  if (kind == SQLITE_READONLY) {
    return false;
  }
  if (code != SQLITE_ROW) {
    const bool rollbackFailed = access_ == Access::Copy && kind == SQLITE_IOERR;
    if (rollbackFailed || (code != SQLITE_NOTADB && !isDamage(code))) {
      fail(code);
    }
    whyUnreadable_ = lastError();
  }
  return true;
}

std::vector<std::string> ReadOnlyConnection::remarks() const {
  const std::string name = utilities::utf8FromPath(file_.filename());
  std::vector<std::string> lines;
  if (access_ == Access::Copy) {
    lines.push_back(name + " has writes that are not finished: a private copy of it was read");
  }
  if (access_ == Access::WithoutLocks && timeOfChange(file_) != changed_) {
    lines.push_back(name + " was changed while it was read: read it again");
  }
  return lines;
}

std::string ReadOnlyConnection::lastError() const {
  std::string message = sqlite3_errmsg(database_.get());
  std::replace_if(
      message.begin(), message.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
  return message;
}

void ReadOnlyConnection::fail(int code) const {
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
