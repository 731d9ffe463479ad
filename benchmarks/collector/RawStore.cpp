#include "benchmarks/collector/RawStore.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include <sqlite3.h>

#include "benchmarks/collector/Rows.h"
#include "tools/collector/PackageReader.h"
#include "tools/collector/RowKey.h"
#include "tools/collector/SqliteSchema.h"

namespace qel::benchmarks {
namespace {

using collector::Row;

struct Close {
  void operator()(sqlite3* connection) const { sqlite3_close(connection); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

class RawStore {
 public:
  explicit RawStore(const std::filesystem::path& file) {
    sqlite3* connection = nullptr;
    check(sqlite3_open_v2(file.c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr));
    connection_.reset(connection);
    execute("PRAGMA synchronous = FULL");
    execute("PRAGMA cache_size = -64000");
    execute("PRAGMA wal_autocheckpoint = 16000");
    insertion_ = prepare(
        "INSERT INTO events (received, key, count, text, session, installation, time, category,"
        " subcategory, event, user) VALUES ('2026-11-21T09:30:05.123Z', ?, ?, ?, ?, ?, ?, ?, ?, ?,"
        " 'customer') ON CONFLICT (key) DO UPDATE SET count = max(count, excluded.count)");
  }

  void execute(const char* sql) {
    check(sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr));
  }

  std::size_t rows() const {
    const Statement statement = prepare("SELECT count(*) FROM events");
    check(sqlite3_step(statement.get()) == SQLITE_ROW ? SQLITE_OK : SQLITE_ERROR);
    return static_cast<std::size_t>(sqlite3_column_int64(statement.get(), 0));
  }

  void add(const Row& row) {
    sqlite3_stmt* const statement = insertion_.get();
    const std::string_view session = row.columns[0] ? *row.columns[0] : std::string_view();
    const collector::Sha256 key = collector::keyOf(session, collector::sha256(row.text));
    sqlite3_bind_blob(statement, 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
    sqlite3_bind_int64(statement, 2, static_cast<sqlite3_int64>(row.count));
    bind(3, row.text);
    for (std::size_t column = 0; column < row.columns.size(); ++column) {
      const auto& value = row.columns[column];
      bind(static_cast<int>(column) + 4, value ? *value : std::string_view());
    }
    check(sqlite3_step(statement) == SQLITE_DONE ? SQLITE_OK : SQLITE_ERROR);
    check(sqlite3_reset(statement));
  }

 private:
  void bind(int parameter, std::string_view text) {
    check(sqlite3_bind_text64(insertion_.get(), parameter, text.data(), text.size(), SQLITE_STATIC,
                              SQLITE_UTF8));
  }

  Statement prepare(const std::string& sql) const {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(connection_.get(), sql.c_str(), -1, &statement, nullptr));
    return Statement(statement);
  }

  void check(int result) const {
    if (result != SQLITE_OK) {
      throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(connection_.get()));
    }
  }

  std::unique_ptr<sqlite3, Close> connection_;
  Statement insertion_;
};

}  // namespace

RawStoreResult fillRawStore(const std::filesystem::path& file, std::uint64_t rows,
                            std::size_t rowsOfPackage, std::size_t packages) {
  RawStore store(file);
  const PackageTemplates templates(rowsOfPackage, store.rows());
  Session session(templates, std::random_device{}());
  RawStoreResult result;
  while (result.rows < rows) {
    std::deque<std::string> bodies;  // the rows are views into them
    std::deque<collector::Package> parsed;
    while (parsed.size() < packages) {
      session.appendNext(bodies.emplace_back());
      parsed.push_back(collector::readPackage(bodies.back()));
    }
    const auto begin = std::chrono::steady_clock::now();
    store.execute("BEGIN IMMEDIATE");
    for (const collector::Package& package : parsed) {
      for (const Row& row : package.events) {
        store.add(row);
        ++result.rows;
      }
    }
    store.execute("COMMIT");
    result.seconds +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }
  return result;
}

}  // namespace qel::benchmarks
