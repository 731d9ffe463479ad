#include "tools/collector/TemporaryStore.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <sqlite3.h>

#include "host/QelUtilities/PathText.h"
#include "tools/collector/Sha256.h"

namespace qel::collector {
namespace {

constexpr int busyMilliseconds = 5000;

/// The digest identifies a text, so that the unique index contains no large texts.
constexpr const char* schema = R"(
  CREATE TABLE IF NOT EXISTS events (id INTEGER PRIMARY KEY, received TEXT NOT NULL,
    count INTEGER NOT NULL, session TEXT, installation TEXT, time TEXT, category TEXT,
    subcategory TEXT, event TEXT, text TEXT NOT NULL, digest BLOB NOT NULL UNIQUE);
  CREATE TABLE IF NOT EXISTS environments (id INTEGER PRIMARY KEY, received TEXT NOT NULL,
    count INTEGER NOT NULL, session TEXT, installation TEXT, time TEXT,
    text TEXT NOT NULL, digest BLOB NOT NULL UNIQUE);
  CREATE TABLE IF NOT EXISTS refused (id INTEGER PRIMARY KEY, received TEXT NOT NULL,
    count INTEGER NOT NULL, reason TEXT NOT NULL, text BLOB NOT NULL,
    digest BLOB NOT NULL UNIQUE);
)";

/// An INSERT statement. Its parameters are: 1 digest, 2 count, 3 text, from 4 on the values of
/// `columns`.
std::string insertion(const std::string& table, const std::string& columns,
                      const std::string& parameters) {
  return "INSERT INTO " + table + " (received, digest, count, text, " + columns +
         ") VALUES (strftime('%Y-%m-%dT%H:%M:%fZ', 'now'), ?1, ?2, ?3, " + parameters +
         ") ON CONFLICT (digest) DO UPDATE SET count = max(count, excluded.count)";
}

constexpr int textParameter = 3;
constexpr int firstColumnParameter = 4;

/// The number of column members that an environment has. An event has all of them.
constexpr std::size_t environmentColumns = 3;

struct Close {
  void operator()(sqlite3* connection) const { sqlite3_close(connection); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

}  // namespace

/// The store's database file. Not thread-safe.
class TemporaryStore::Database {
 public:
  explicit Database(const std::filesystem::path& file);

  /// See `Store::add`.
  void add(const Package& package);

 private:
  class Insertion;
  class Transaction;
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;

  void execute(const char* sql);
  Statement prepare(const std::string& sql);
  void addRow(const Statement& statement, const Row& row, std::size_t columns);
  void addRefused(const RefusedText& refused);
  [[noreturn]] void fail() const;

  const std::string name_;
  std::unique_ptr<sqlite3, Close> connection_;
  Statement addEvent_;
  Statement addEnvironment_;
  Statement addRefused_;
};

/// A transaction. The destructor rolls it back unless it was committed.
class TemporaryStore::Database::Transaction {
 public:
  explicit Transaction(Database& database) : database_(database) {
    database_.execute("BEGIN IMMEDIATE");
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction() {
    if (sqlite3_get_autocommit(database_.connection_.get()) == 0) {
      sqlite3_exec(database_.connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
  }

  void commit() { database_.execute("COMMIT"); }

 private:
  Database& database_;
};

/// One execution of a prepared INSERT statement. The destructor releases the bound values.
class TemporaryStore::Database::Insertion {
 public:
  Insertion(Database& database, const Statement& statement, std::string_view text,
            std::size_t count)
      : database_(database), statement_(statement.get()) {
    const Sha256 digest = sha256(text);
    check(sqlite3_bind_blob(statement_, 1, digest.data(), static_cast<int>(digest.size()),
                            SQLITE_TRANSIENT));
    check(sqlite3_bind_int64(statement_, 2, static_cast<sqlite3_int64>(count)));
  }
  Insertion(const Insertion&) = delete;
  Insertion& operator=(const Insertion&) = delete;
  ~Insertion() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }

  void bindText(int parameter, std::string_view text) {
    check(sqlite3_bind_text64(statement_, parameter, text.data(), text.size(), SQLITE_STATIC,
                              SQLITE_UTF8));
  }

  void bindBlob(int parameter, std::string_view bytes) {
    check(sqlite3_bind_blob64(statement_, parameter, bytes.data(), bytes.size(), SQLITE_STATIC));
  }

  void run() { check(sqlite3_step(statement_) == SQLITE_DONE ? SQLITE_OK : SQLITE_ERROR); }

 private:
  void check(int result) const {
    if (result != SQLITE_OK) {
      database_.fail();
    }
  }

  Database& database_;
  sqlite3_stmt* const statement_;
};

TemporaryStore::Database::Database(const std::filesystem::path& file)
    : name_(utilities::utf8FromPath(file)) {
  // SQLite cannot mistake an absolute path for a URI or a special name.
  const std::string path = utilities::utf8FromPath(std::filesystem::absolute(file));
  sqlite3* connection = nullptr;
  const int opened = sqlite3_open_v2(path.c_str(), &connection,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  connection_.reset(connection);
  if (opened != SQLITE_OK) {
    fail();
  }
  sqlite3_busy_timeout(connection, busyMilliseconds);
  execute("PRAGMA synchronous = FULL");
  execute(schema);
  addEvent_ =
      prepare(insertion("events", "session, installation, time, category, subcategory, event",
                        "?4, ?5, ?6, ?7, ?8, ?9"));
  addEnvironment_ = prepare(insertion("environments", "session, installation, time", "?4, ?5, ?6"));
  addRefused_ = prepare(insertion("refused", "reason", "?4"));
}

void TemporaryStore::Database::add(const Package& package) {
  Transaction transaction(*this);
  for (const Row& row : package.environments) {
    addRow(addEnvironment_, row, environmentColumns);
  }
  for (const Row& row : package.events) {
    addRow(addEvent_, row, tools::columnMembers.size());
  }
  for (const RefusedText& refused : package.refused) {
    addRefused(refused);
  }
  transaction.commit();
}

void TemporaryStore::Database::addRow(const Statement& statement, const Row& row,
                                      std::size_t columns) {
  Insertion insertion(*this, statement, row.text, row.count);
  insertion.bindText(textParameter, row.text);
  for (std::size_t column = 0; column < columns; ++column) {
    if (const auto& value = row.columns[column]) {
      insertion.bindText(firstColumnParameter + static_cast<int>(column), *value);
    }
  }
  insertion.run();
}

void TemporaryStore::Database::addRefused(const RefusedText& refused) {
  Insertion insertion(*this, addRefused_, refused.text, refused.count);
  insertion.bindBlob(textParameter, refused.text);
  insertion.bindText(firstColumnParameter, refused.reason);
  insertion.run();
}

void TemporaryStore::Database::execute(const char* sql) {
  if (sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
    fail();
  }
}

TemporaryStore::Database::Statement TemporaryStore::Database::prepare(const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(connection_.get(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement,
                         nullptr) != SQLITE_OK) {
    fail();
  }
  return Statement(statement);
}

void TemporaryStore::Database::fail() const {
  sqlite3* const connection = connection_.get();
  std::string reason = sqlite3_errmsg(connection);
  const int code = sqlite3_errcode(connection) & 0xff;
  const int systemError = sqlite3_system_errno(connection);
  if ((code == SQLITE_CANTOPEN || code == SQLITE_IOERR) && systemError != 0) {
    reason += ": " + std::system_category().message(systemError);
  }
  throw StoreError("cannot use the store " + name_ + ": " + reason);
}

TemporaryStore::TemporaryStore(const std::filesystem::path& file)
    : database_(std::make_unique<Database>(file)) {}

TemporaryStore::~TemporaryStore() = default;

void TemporaryStore::add(const Uploads& uploads, std::chrono::steady_clock::time_point) {
  const utilities::MutexLock lock(mutex_);
  for (const auto& upload : uploads) {
    database_->add(upload->package);
  }
}

}  // namespace qel::collector
