#include "tools/collector/SqliteConnection.h"

#include <algorithm>
#include <system_error>
#include <thread>

#include <sqlite3.h>

#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "tools/collector/SqliteExecution.h"
#include "tools/collector/Store.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;

/// The number of SQLite's instructions between two looks at the clock.
constexpr int instructions = 1000;

int waitWhileBusy(void* connection, int attempt) {
  if (static_cast<const SqliteConnection*>(connection)->isLate()) {
    return 0;
  }
  std::this_thread::sleep_for(std::min(10, attempt + 1) * 1ms);
  return 1;
}

int interruptIfLate(void* connection) {
  return static_cast<const SqliteConnection*>(connection)->isLate() ? 1 : 0;
}

}  // namespace

void SqliteClose::operator()(sqlite3* connection) const { sqlite3_close(connection); }

void SqliteClose::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

SqliteConnection::SqliteConnection(const std::filesystem::path& file, Missing missing,
                                   Access access)
    : name_(utilities::utf8FromPath(file)), deadline_(std::chrono::steady_clock::now() + patience) {
  if (missing == Missing::Create) {
    std::error_code error;  // SQLite finds a better text.
    utilities::createForOwnerAlone(file, error);
  }
  // SQLite cannot mistake an absolute path for a URI or a special name.
  const std::string path = utilities::utf8FromPath(std::filesystem::absolute(file));
  sqlite3* connection = nullptr;
  const int opened = sqlite3_open_v2(
      path.c_str(), &connection,
      access == Access::Write ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY, nullptr);
  connection_.reset(connection);
  if (opened != SQLITE_OK) {
    failAsReported();
  }
  sqlite3_busy_handler(connection, waitWhileBusy, this);
  sqlite3_progress_handler(connection, instructions, interruptIfLate, this);
  execute("PRAGMA secure_delete = ON");
  execute("PRAGMA synchronous = FULL");
}

void SqliteConnection::execute(const std::string& sql) const {
  if (sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    failAsReported();
  }
}

SqliteStatement SqliteConnection::prepare(const std::string& sql) const {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(handle(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement,
                         nullptr) != SQLITE_OK) {
    failAsReported();
  }
  return SqliteStatement(statement);
}

std::int64_t SqliteConnection::number(const std::string& sql) {
  const auto statement = prepare(sql);
  SqliteExecution execution(*this, statement);
  execution.step();
  return execution.number(0);
}

bool SqliteConnection::truncateLog() const {
  return sqlite3_wal_checkpoint_v2(handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr,
                                   nullptr) == SQLITE_OK;
}

void SqliteConnection::fail(const std::string& reason) const {
  throw StoreError("cannot use the store " + name_ + ": " + reason);
}

void SqliteConnection::failAsReported() const {
  const int code = sqlite3_errcode(handle()) & 0xff;
  const int systemError = sqlite3_system_errno(handle());
  std::string reason = sqlite3_errmsg(handle());
  if ((code == SQLITE_CANTOPEN || code == SQLITE_IOERR) && systemError != 0) {
    reason += ": " + std::system_category().message(systemError);
  }
  if (code == SQLITE_CONSTRAINT || code == SQLITE_TOOBIG || code == SQLITE_MISMATCH) {
    throw UploadError("cannot use the store " + name_ + ": " + reason);
  }
  fail(code == SQLITE_INTERRUPT ? "the deadline has passed" : reason);
}

}  // namespace qel::collector
