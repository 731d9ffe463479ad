#include "host/QelSql/SqlDatabaseAdapter.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/QelLog/LogManager.h"
#include "host/QelSql/BusyWait.h"
#include "host/QelSql/Connection.h"
#include "host/QelSql/DatabaseFile.h"
#include "host/QelSql/DirectoryClaim.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

namespace qel::db::sql {
namespace {

using Status = Outcome::Status;

bool startsWithKeywords(std::string_view statement, std::string_view upperCase) {
  return statement.size() >= upperCase.size() &&
         std::equal(upperCase.begin(), upperCase.end(), statement.begin(), [](char a, char b) {
           return a == std::toupper(static_cast<unsigned char>(b));
         });
}

constexpr std::string_view tableCreation = "CREATE TABLE IF NOT EXISTS ";
constexpr std::string_view vacuumChoice = "PRAGMA AUTO_VACUUM = INCREMENTAL";

/// Whether the statement belongs to what makes a file this program's: each new file is given it.
/// Such a statement can be run again.
bool shapesTheFile(std::string_view statement) {
  return startsWithKeywords(statement, tableCreation) ||
         startsWithKeywords(statement, vacuumChoice);
}

Result failedResult(const std::string& reason) {
  Result result;
  result.vSuccessSet(false);
  result.vErrorMessageSet(reason);
  return result;
}

}  // namespace

class SqlDatabaseAdapter::Implementation {
 public:
  explicit Implementation(const std::filesystem::path& file)
      : file_(std::filesystem::absolute(file)), claim_(file_.parent_path()) {
    openFile();
  }

  Result execute(const std::string& statement);
  ScopeGuard beginTransaction();

 private:
  void openFile();
  Outcome connect();
  Outcome run(const std::string& statement);
  Outcome readyFile();
  Outcome shapeFile();
  Outcome shapeFileBy(const std::string& statement);
  void begin();
  void doom(const char* what, const Outcome& outcome);
  template <typename MakeText>
  void logError(MakeText makeText) noexcept;
  void endTransaction() noexcept;
  void commit() noexcept;
  void replaceCorruptFile();
  void setFileAside(const std::string& reason);

  const std::filesystem::path file_;
  const std::string quotedFile_ = '"' + utilities::utf8FromPath(file_) + '"';
  const std::shared_ptr<log::LoggerInterface> logger_ =
      log::LogManager::instance().getLogger("qel.db.sql.SqlDatabaseAdapter");
  const std::string outOfMemoryText_ =
      "database " + quotedFile_ + ": out of memory, and what was to be stored may be lost";
  const DirectoryClaim claim_;

  std::recursive_mutex mutex_;  ///< guards what follows; a transaction holds it to its end
  BusyWait busyWait_{quotedFile_, logger_};
  std::optional<Connection> connection_;   ///< none once a corrupt file could not be replaced
  std::vector<std::string> shape_;         ///< the statements that shape the file, in order
  std::size_t shaped_ = 0;                 ///< so many of them the file is known to have
  bool isNew_ = false;                     ///< the file has nothing that a loss of power could take
  std::optional<std::string> corruption_;  ///< why the file is to be replaced, if it is
  int depth_ = 0;                          ///< of transactions on the thread that holds the mutex
  bool doomed_ = false;                    ///< the transaction will be rolled back
  std::string reasonOfDoom_;
};

Result SqlDatabaseAdapter::Implementation::execute(const std::string& statement) {
  const std::lock_guard lock(mutex_);
  if (doomed_) {
    return failedResult("not run, since the transaction has failed: " + reasonOfDoom_);
  }
  doomed_ = depth_ > 0;  // Stands if memory runs out below.
  const bool shapes = depth_ == 0 && shapesTheFile(statement);
  if (shapes && std::ranges::count(shape_, statement) == 0) {
    shape_.push_back(statement);
  }
  Outcome outcome = shapes ? shapeFile() : depth_ == 0 ? readyFile() : Outcome{};
  if (outcome.status == Status::Done && !shapes) {
    outcome = run(statement);
  }
  if (outcome.status != Status::Done) {
    if (depth_ > 0) {
      doom("a statement", outcome);
    } else {
      replaceCorruptFile();
    }
    return failedResult(outcome.reason);
  }
  doomed_ = false;
  Result result;
  result.resultSet(std::move(outcome.rows));
  return result;
}

ScopeGuard SqlDatabaseAdapter::Implementation::beginTransaction() {
  mutex_.lock();
  ScopeGuard guard([this] { endTransaction(); });
  if (++depth_ == 1) {
    begin();
  }
  return guard;
}

void SqlDatabaseAdapter::Implementation::begin() {
  reasonOfDoom_ = "out of memory";  // until another reason is found
  Outcome outcome = readyFile();
  if (outcome.status == Status::Done) {
    outcome = run("BEGIN IMMEDIATE");
  }
  if (outcome.status != Status::Done) {
    doom("BEGIN", outcome);
  }
}

void SqlDatabaseAdapter::Implementation::doom(const char* what, const Outcome& outcome) {
  doomed_ = true;
  logError([&] {
    return "database " + quotedFile_ + ": " + what +
           " failed, so nothing of its transaction is stored: " + outcome.reasonToBeLogged;
  });
  reasonOfDoom_ = outcome.reason;
}

/// Also where nothing may be thrown: without memory for the text, that is what is told.
template <typename MakeText>
void SqlDatabaseAdapter::Implementation::logError(MakeText makeText) noexcept {
  try {
    logger_->log(log::Level::Error, makeText());
  } catch (const std::bad_alloc&) {
    logger_->log(log::Level::Error, outOfMemoryText_);
  }
}

void SqlDatabaseAdapter::Implementation::endTransaction() noexcept {
  const std::lock_guard lock(mutex_, std::adopt_lock);
  if (--depth_ > 0) {
    return;
  }
  if (!doomed_) {
    commit();
  }
  if (std::exchange(doomed_, false) && connection_) {
    connection_->rollBack();
  }
  replaceCorruptFile();
}

void SqlDatabaseAdapter::Implementation::commit() noexcept {
  try {
    const Outcome outcome = run("COMMIT");
    if (outcome.status != Status::Done) {
      doom("COMMIT", outcome);
    }
  } catch (const std::bad_alloc&) {
    doomed_ = true;  // Only telling of a failure takes memory.
    logger_->log(log::Level::Error, outOfMemoryText_);
  }
}

Outcome SqlDatabaseAdapter::Implementation::run(const std::string& statement) {
  if (!connection_) {
    const char* reason = "the corrupt database file could not be replaced";
    return {Status::Failed, reason, reason, {}};
  }
  Outcome outcome = connection_->run(statement);
  if (outcome.status == Status::FileIsCorrupt) {
    corruption_ = outcome.reason;
  }
  return outcome;
}

/// To be done before any statement that does not shape the file. While a new file is shaped, the
/// host's thread waits for no disk.
Outcome SqlDatabaseAdapter::Implementation::readyFile() {
  Outcome outcome = shapeFile();
  if (outcome.status == Status::Done && isNew_) {
    outcome = run("PRAGMA synchronous = FULL");
    isNew_ = outcome.status != Status::Done;
  }
  return outcome;
}

/// One after the other: a table that came before the choice of `auto_vacuum` would rule it out for
/// good. What could not be done (another process may have held the file) is tried again the next
/// time.
Outcome SqlDatabaseAdapter::Implementation::shapeFile() {
  for (; shaped_ < shape_.size(); ++shaped_) {
    Outcome outcome = shapeFileBy(shape_[shaped_]);
    if (outcome.status != Status::Done) {
      return outcome;
    }
  }
  return {};
}

/// Writes nothing if the file has that shape already, as SQLite would. A file of others may be one
/// that cannot shrink (once there are tables, SQLite takes the choice for 1 alone) or have
/// something else under a table's name (SQLite keeps the text of a creation from the name on): our
/// rows would stay in the one for good, and never get into the other.
Outcome SqlDatabaseAdapter::Implementation::shapeFileBy(const std::string& statement) {
  std::string question =
      "SELECT auto_vacuum FROM pragma_auto_vacuum"
      " WHERE auto_vacuum <> 1 AND EXISTS (SELECT * FROM sqlite_schema)";
  std::string expected = "2";
  if (startsWithKeywords(statement, tableCreation)) {
    const auto definition = statement.substr(tableCreation.size());
    const auto name = definition.substr(0, definition.find_first_of(" ("));
    question = "SELECT sql FROM sqlite_schema WHERE name = '" + name + "' COLLATE NOCASE";
    expected = "CREATE TABLE " + definition;
  }
  Outcome found = run(question);
  if (found.status != Status::Done || found.rows == Result::Rows{{expected}}) {
    return found;
  }
  if (found.rows.empty()) {
    return run(statement);
  }
  corruption_ = "it is a database of another program's making";
  return {Status::FileIsCorrupt, *corruption_, *corruption_, {}};
}

void SqlDatabaseAdapter::Implementation::openFile() {
  try {
    Outcome outcome = connect();
    if (outcome.status == Status::FileIsCorrupt) {
      setFileAside(outcome.reason);
      outcome = connect();
    }
    if (outcome.status != Status::Done) {
      throw qel::exception(outcome.reason);
    }
  } catch (const qel::exception& failure) {
    throw qel::exception("cannot open the database " + quotedFile_ + ": " + failure.what());
  }
}

Outcome SqlDatabaseAdapter::Implementation::connect() {
  createForOwnerAlone(file_);
  connection_.emplace(file_, busyWait_);
  Outcome outcome = connection_->check();
  std::error_code ignored;
  isNew_ = outcome.status == Status::Done && std::filesystem::file_size(file_, ignored) == 0;
  if (isNew_) {
    run("PRAGMA synchronous = OFF");
  }
  return outcome;
}

void SqlDatabaseAdapter::Implementation::setFileAside(const std::string& reason) {
  connection_.reset();
  const auto name = setAside(file_, std::chrono::system_clock::now());
  logger_->log(log::Level::Error, "database " + quotedFile_ + " is corrupt (" + reason +
                                      "); it was set aside as \"" + utilities::utf8FromPath(name) +
                                      "\" and a fresh one is begun");
}

void SqlDatabaseAdapter::Implementation::replaceCorruptFile() {
  if (!corruption_) {
    return;
  }
  try {
    setFileAside(*std::exchange(corruption_, std::nullopt));
    openFile();
    shaped_ = 0;
    if (const Outcome outcome = shapeFile(); outcome.status != Status::Done) {
      throw qel::exception(outcome.reasonToBeLogged);
    }
  } catch (const std::exception& failure) {
    connection_.reset();
    corruption_.reset();
    logError([&] {
      return "database " + quotedFile_ +
             " is corrupt and could not be replaced, so nothing more is stored in it: " +
             failure.what();
    });
  }
}

SqlDatabaseAdapter::SqlDatabaseAdapter(const std::filesystem::path& file)
    : implementation_(std::make_unique<Implementation>(file)) {}

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

}  // namespace qel::db::sql
