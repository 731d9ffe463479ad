#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>

#include "tools/collector/Sha256.h"
#include "tools/collector/SqliteConnection.h"
#include "tools/collector/SqliteRemoval.h"
#include "tools/collector/SqliteSchema.h"
#include "tools/collector/SqliteSummaries.h"
#include "tools/collector/Store.h"

namespace qel::collector {

/// The received packages, in an SQLite file with three tables:
///
/// - `events`: id, received, count, user, session, installation, time, category, subcategory,
///   event, text, key
/// - `environments`: id, received, count, user, session, installation, time, text, key
/// - `refused`: id, received, count, user, reason, text, key
///
/// `text` is the text as it was sent, byte for byte. `received` is the time (UTC) when the text was
/// first received, and `user` who sent it first. `count` is the maximum number of its occurrences
/// in one package, so a package that is sent again does not increase it. A column is NULL if the
/// row has no such member. `key` identifies the text. `SqliteSummaries` has further tables.
///
/// **Log.** Changes are first written to a write-ahead log, so reading never delays writing. While
/// a reader does not end its transaction, the log grows; the collector's log then has a warning.
class SqliteStore : public Store {
 public:
  /// Opens or creates the file, for its owner alone; upgrades a store of an older version. Throws
  /// `StoreError` if that fails.
  explicit SqliteStore(const std::filesystem::path& file);
  ~SqliteStore() override;

  void add(const Uploads& uploads, std::chrono::steady_clock::time_point deadline) override;
  bool removeSome(std::chrono::system_clock::time_point before) override;
  StoreSize size() const override;

 private:
  struct Table {
    SqliteStatement insertion;
    SqliteStatement stored;
    SqliteStatement raising;
    SqliteStatement oldest;
    SqliteStatement old;
    std::optional<SqliteRemoval> removal;
    std::int64_t checked = 0;  ///< rows up to this id are not examined again by `removeSome`
    std::int64_t step = 0;     ///< the number of rows that `removeSome` examines next
  };
  struct Change {
    std::int64_t id = 0;     ///< of the row
    std::int64_t count = 0;  ///< by which the row's count is larger than before
    bool isNew = false;
  };
  struct Origin {
    std::string_view received;
    std::string_view user;
  };
  enum TableIndex : std::size_t { Events, Environments, Refused };

  void prepare(Table& table, const SqliteTable& description);
  void add(const Upload& upload, std::string_view received);
  Change addRow(const Table& table, const Origin& origin, const Row& row, std::size_t columns);
  void addRefused(const Origin& origin, const RefusedText& refused);
  Change insertOrRaise(const Table& table, SqliteExecution& insertion, const Sha256& key,
                       std::int64_t count);
  bool removeSome(Table& table, std::string_view before, std::string_view now);
  void limitLog();

  const std::filesystem::path file_;
  SqliteConnection connection_;
  std::optional<SqliteSummaries> summaries_;  ///< a store of an older version has none
  std::array<Table, sqliteTables.size()> tables_;
  bool reportedLog_ = false;
};

}  // namespace qel::collector
