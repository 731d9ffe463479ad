#include "host/QelSql/Database.h"

#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::db::sql {
namespace {

using Status = Outcome::Status;

/// Whether the calling thread may start a long operation.
bool hasTime() {
  using utilities::Patience;
  return Patience::left() == Patience::unlimited &&
         utilities::exitDeadline() == std::chrono::steady_clock::time_point::max();
}

}  // namespace

Database::Database(std::filesystem::path file, const DatabaseLog& log)
    : file_(std::move(file)), log_(log) {
  open();
}

Outcome Database::addToSchema(const std::string& statement) {
  schema_.add(statement);
  return applySchema();
}

Outcome Database::prepare() {
  Outcome outcome = tryToPrepare();
  if (outcome.status == Status::FileIsCorrupt) {
    replaceIfCorrupt();
    outcome = tryToPrepare();
  }
  return outcome;
}

/// Until its schema exists, a new file is written without waiting for the disk.
Outcome Database::tryToPrepare() {
  Outcome outcome = applySchema();
  if (outcome.isDone() && isNew_) {
    outcome = run("PRAGMA synchronous = FULL");
    isNew_ = !outcome.isDone();
  }
  if (outcome.isDone() && !isJournalProtected_) {
    outcome = protectJournal();
  }
  if (outcome.isDone() && hasTime()) {
    outcome = noted(schema_.makeShrinkable(*connection_));
  }
  return outcome;
}

/// Creates the journal in advance, and makes SQLite keep it between transactions. SQLite deletes
/// the journal of an empty file, so the file must have its schema. A write-ahead log stays in use.
Outcome Database::protectJournal() {
  Outcome outcome = run("PRAGMA journal_mode");
  if (outcome.isDone() && outcome.rows == Result::Rows{{"delete"}}) {
    auto journal = file_;
    journal += journalSuffix;
    std::error_code error;
    utilities::createForOwnerAlone(journal, error);
    outcome = error ? failed(Status::Failed, utilities::systemMessage(error))
                    : run("PRAGMA journal_mode = TRUNCATE");
  }
  isJournalProtected_ = outcome.isDone();
  return outcome;
}

Outcome Database::run(const std::string& statement) {
  if (!connection_) {
    return failed(Status::Failed, "the database file cannot be used");
  }
  Outcome outcome = noted(connection_->run(statement));
  schema_.noteId(connection_->lastInsertedId());
  return outcome;
}

Outcome Database::noted(Outcome outcome) {
  if (outcome.status == Status::FileIsCorrupt) {
    corruption_ = outcome.reason;
  }
  return outcome;
}

void Database::rollBack() noexcept {
  if (connection_) {
    connection_->rollBack();
  }
}

void Database::replaceIfCorrupt() {
  if (connection_ && !corruption_) {
    return;
  }
  try {
    if (corruption_) {
      setAside(*corruption_);
      corruption_.reset();
    }
    open();
    applySchema();
    isOutOfReach_ = false;
  } catch (const std::exception& failure) {
    connection_.reset();
    if (!std::exchange(isOutOfReach_, true)) {
      log_.error(
          [&] { return std::string(" is corrupt and cannot be replaced yet: ") + failure.what(); });
    }
  }
}

void Database::open() {
  try {
    Outcome outcome = connect();
    if (outcome.status == Status::FileIsCorrupt) {
      setAside(outcome.reason);
      outcome = connect();
    }
    if (outcome.status == Status::Busy) {
      log_.warn(" is held by another connection; it is checked when it is free");
    } else if (!outcome.isDone()) {
      throw qel::exception(outcome.reason);
    }
  } catch (const qel::exception& failure) {
    throw qel::exception("cannot open the database \"" + utilities::utf8FromPath(file_) +
                         "\": " + failure.what());
  }
}

Outcome Database::connect() {
  std::error_code error;
  utilities::createForOwnerAlone(file_, error);
  if (error) {
    throw qel::exception(utilities::systemMessage(error));
  }
  connection_.emplace(file_, busyWait_);
  isChecked_ = false;
  isJournalProtected_ = journalHasRightsOfDatabase;
  return check();
}

Outcome Database::check() {
  if (isChecked_) {
    return {};
  }
  Outcome outcome = connection_->check();
  isChecked_ = outcome.isDone();
  std::error_code ignored;
  isNew_ = isChecked_ && std::filesystem::file_size(file_, ignored) == 0;
  if (isNew_) {
    run("PRAGMA synchronous = OFF");
  }
  return outcome;
}

Outcome Database::applySchema() {
  if (!connection_) {
    return failed(Status::FileIsCorrupt, "the corrupt database file cannot be replaced");
  }
  connection_->retryRollBack();
  Outcome outcome = check();
  if (outcome.isDone()) {
    outcome = schema_.apply(*connection_);
  }
  return noted(std::move(outcome));
}

void Database::setAside(const std::string& reason) {
  connection_.reset();
  schema_.restart();
  if (!std::filesystem::exists(file_)) {
    return;  // another program has moved the file
  }
  const auto name = sql::setAside(file_, std::chrono::system_clock::now());
  log_.error([&] {
    return " is corrupt (" + reason + "); it was set aside as \"" + utilities::utf8FromPath(name) +
           "\" and a fresh one is begun";
  });
}

}  // namespace qel::db::sql
