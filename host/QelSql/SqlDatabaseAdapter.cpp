#include "host/QelSql/SqlDatabaseAdapter.h"

#include <memory>
#include <new>
#include <string>
#include <utility>

#include "host/QelSql/Database.h"
#include "host/QelSql/DatabaseLock.h"
#include "host/QelSql/DatabaseLog.h"
#include "host/QelSql/DirectoryClaim.h"
#include "host/QelSql/Transaction.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"

namespace qel::db::sql {
namespace {

using utilities::Patience;
using Status = Outcome::Status;

constinit thread_local std::uint64_t committed = 0;

constexpr const char* inUse = "another thread uses the database, and this one waits no longer";

Outcome notRun(const std::string& reason) {
  return failed(Status::Failed, "not run, since the transaction has failed: " + reason);
}

Result resultOf(Outcome outcome) {
  Result result;
  if (outcome.isDone()) {
    result.resultSet(std::move(outcome.rows));
  } else {
    result.vSuccessSet(false);
    result.vErrorMessageSet(outcome.reason);
  }
  return result;
}

}  // namespace

class SqlDatabaseAdapter::Implementation {
 public:
  explicit Implementation(const std::filesystem::path& file)
      : claim_(file.parent_path()), log_(file), database_(openAtOnce(file, log_)) {}

  Result execute(const std::string& statement);
  ScopeGuard beginTransaction() QEL_NO_THREAD_SAFETY_ANALYSIS;

 private:
  static Database openAtOnce(const std::filesystem::path& file, const DatabaseLog& log);
  Outcome addToSchema(const std::string& statement) QEL_REQUIRES(lock_);
  Outcome executeAlone(const std::string& statement) QEL_REQUIRES(lock_);
  Outcome executeInTransaction(const std::string& statement) QEL_REQUIRES(lock_);
  Outcome logged(Outcome outcome, bool hadGivenUp) const;
  void begin() QEL_REQUIRES(lock_);
  void endTransaction() noexcept QEL_RELEASE(lock_);
  void commit() noexcept QEL_REQUIRES(lock_);
  void fail(const char* what, const Outcome& outcome) QEL_REQUIRES(lock_);
  void logFailure(const char* what, const std::string& reason) const noexcept;

  const DirectoryClaim claim_;
  const DatabaseLog log_;
  RefusedTransactions refused_;
  DatabaseLock lock_;
  Database database_ QEL_GUARDED_BY(lock_);
  Transaction transaction_ QEL_GUARDED_BY(lock_);
};

/// A thread that opens a database does not wait for a locked file.
Database SqlDatabaseAdapter::Implementation::openAtOnce(const std::filesystem::path& file,
                                                        const DatabaseLog& log) {
  const Patience none(Patience::none);
  return {file, log};
}

Result SqlDatabaseAdapter::Implementation::execute(const std::string& statement) {
  const Patience patience;
  if (refused_.isUnderWay()) {
    return resultOf(notRun(inUse));
  }
  const bool hadGivenUp = Patience::hasGivenUp();
  if (!lock_.lock()) {
    return resultOf(logged(failed(Status::Busy, inUse), hadGivenUp));
  }
  const DatabaseUnlock unlock(lock_);
  if (transaction_.isUnderWay()) {
    return resultOf(executeInTransaction(statement));
  }
  if (Schema::isMadeBy(statement)) {
    return resultOf(addToSchema(statement));
  }
  return resultOf(logged(executeAlone(statement), hadGivenUp));
}

/// Logs a statement that was abandoned because the thread's patience ended, but only the first such
/// statement in a call.
Outcome SqlDatabaseAdapter::Implementation::logged(Outcome outcome, bool hadGivenUp) const {
  if (outcome.status == Status::Busy && !hadGivenUp && !Patience::mustStop()) {
    log_.warn(": a statement was given up: " + outcome.reason);
  }
  return outcome;
}

Outcome SqlDatabaseAdapter::Implementation::addToSchema(const std::string& statement) {
  Outcome outcome = database_.addToSchema(statement);
  database_.replaceIfCorrupt();
  return outcome;
}

Outcome SqlDatabaseAdapter::Implementation::executeAlone(const std::string& statement) {
  Outcome outcome = database_.prepare();
  if (outcome.isDone()) {
    outcome = database_.run(statement);
  }
  database_.replaceIfCorrupt();
  return outcome;
}

Outcome SqlDatabaseAdapter::Implementation::executeInTransaction(const std::string& statement) {
  if (transaction_.hasFailed()) {
    return notRun(transaction_.reason());
  }
  transaction_.beginStep();
  Outcome outcome = database_.run(statement);
  if (outcome.isDone()) {
    transaction_.endStep();
  } else {
    fail("a statement", outcome);
  }
  return outcome;
}

/// The thread safety analysis cannot follow that the guard takes over the lock and releases it when
/// it is destroyed.
ScopeGuard SqlDatabaseAdapter::Implementation::beginTransaction() {
  const Patience patience;
  if (refused_.isUnderWay() || !lock_.lock()) {
    refused_.begin();
    logFailure("BEGIN", inUse);
    return ScopeGuard([this] { refused_.end(); });
  }
  ScopeGuard guard([this]() QEL_NO_THREAD_SAFETY_ANALYSIS { endTransaction(); });
  begin();
  return guard;
}

void SqlDatabaseAdapter::Implementation::begin() {
  transaction_.begin();
  if (!transaction_.isOutermost()) {
    return;
  }
  transaction_.beginStep();
  Outcome outcome = database_.prepare();
  if (outcome.isDone()) {
    outcome = database_.run("BEGIN IMMEDIATE");
  }
  if (outcome.isDone()) {
    transaction_.endStep();
  } else {
    fail("BEGIN", outcome);
  }
}

void SqlDatabaseAdapter::Implementation::endTransaction() noexcept {
  const Patience patience;
  const DatabaseUnlock unlock(lock_);
  if (!transaction_.isOutermost()) {
    transaction_.end();
    return;
  }
  if (!transaction_.hasFailed()) {
    commit();
  }
  if (transaction_.hasFailed()) {
    database_.rollBack();
  }
  transaction_.end();
  database_.replaceIfCorrupt();
}

void SqlDatabaseAdapter::Implementation::commit() noexcept {
  transaction_.beginStep();
  try {
    const Outcome outcome = database_.run("COMMIT");
    if (outcome.isDone()) {
      transaction_.endStep();
      ++committed;
    } else {
      fail("COMMIT", outcome);
    }
  } catch (const std::bad_alloc&) {
    log_.outOfMemory();
  }
}

void SqlDatabaseAdapter::Implementation::fail(const char* what, const Outcome& outcome) {
  logFailure(what, outcome.reasonToBeLogged);
  transaction_.fail(outcome.reason);
}

void SqlDatabaseAdapter::Implementation::logFailure(const char* what,
                                                    const std::string& reason) const noexcept {
  if (Patience::mustStop()) {
    return;  // an interruption on purpose
  }
  log_.error([&] {
    return std::string(": ") + what + " failed, so nothing of its transaction is stored: " + reason;
  });
}

SqlDatabaseAdapter::SqlDatabaseAdapter(const std::filesystem::path& file)
    : implementation_(std::make_unique<Implementation>(utilities::absolutePath(file))) {}

SqlDatabaseAdapter::~SqlDatabaseAdapter() = default;

Result SqlDatabaseAdapter::execute(const std::string& statement) {
  return implementation_->execute(statement);
}

Result SqlDatabaseAdapter::selectAll(const std::string& table) {
  return implementation_->execute("SELECT * FROM " + table);
}

Result SqlDatabaseAdapter::deleteIds(const std::string& table, const std::string& ids) {
  return implementation_->execute("DELETE FROM " + table + " WHERE ID IN (" + ids + ")");
}

ScopeGuard SqlDatabaseAdapter::beginTransaction() { return implementation_->beginTransaction(); }

std::uint64_t SqlDatabaseAdapter::committedByThisThread() { return committed; }

}  // namespace qel::db::sql
