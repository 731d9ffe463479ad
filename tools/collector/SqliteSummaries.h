#pragma once

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "tools/collector/SessionSummary.h"
#include "tools/collector/SqliteExecution.h"

namespace qel::collector {

/// The summaries of a store, which change with its rows. The page's figures are read from them.
///
/// - `summary_sessions`: one row for each pair of session and installation
/// - `summary_daily`: kind (of `SessionSummary`), day, ID in `summary_sessions`, name, value
/// - `summary_crashes`: one row for each crash event
/// - `summary_state`: the ID of the last row of a table that is summed up
///
/// **Removed rows** are subtracted. Counts are exact, and a crash goes with its row. Other values
/// stay: the highest reading of memory until its session has no `MemoryUsage` event of that day;
/// the version, the first and last time and the last command until the session has no row.
///
/// **Rows of other programs.** Rows that another program has inserted have larger IDs than the last
/// summed one. `change` sums them up first. Rows that another program has deleted stay summed up.
class SqliteSummaries {
 public:
  /// Makes the tables anew, and sums up all rows. Needs a transaction.
  static void create(SqliteConnection& connection);

  /// The columns of a table that `rowOf` reads.
  static std::string columnsOf(std::string_view table);
  static SummedRow rowOf(const SqliteExecution& execution);

  /// The store must have the summaries. `connection` must outlive this object.
  explicit SqliteSummaries(SqliteConnection& connection);

  /// Runs `work` in a transaction in which all rows are summed up. `work` must pass each row that
  /// it changes to `of`.
  void change(const std::function<void()>& work);

  /// Sums up some rows that are not yet. Returns whether there were any. Needs a transaction.
  bool addNext();

  /// What the present transaction adds to the summary of a row's session.
  SessionSummary& of(const SummedRow& row);

 private:
  using Key = std::pair<std::string, std::string>;  ///< session, installation
  using KeyView = std::pair<std::string_view, std::string_view>;

  struct Less {
    using is_transparent = void;
    bool operator()(const KeyView& left, const KeyView& right) const { return left < right; }
  };

  struct Table {
    SqliteStatement next;
    SqliteStatement state;
    SqliteStatement setState;
    void (SessionSummary::*add)(const SummedRow& row);
  };

  Table prepareTable(const std::string& name, void (SessionSummary::*add)(const SummedRow& row));
  bool addNext(const Table& table);
  void write();
  void write(const Key& key, const SessionSummary& summary);
  std::string inheritedCommand(const Key& key);
  std::int64_t writeSession(const Key& key, const SessionSummary& summary);
  void writeDaily(std::int64_t session, const SessionSummary::DailyKey& key, std::int64_t value);
  void removeEmptyDaily(std::int64_t session, const SessionSummary::DailyKey& key);
  void writeCrash(std::int64_t session, const SessionSummary::Crash& crash,
                  const std::string& inherited);

  SqliteConnection& connection_;
  const std::array<Table, 2> tables_;
  const SqliteStatement command_;
  const SqliteStatement session_;
  const SqliteStatement emptySession_;
  const SqliteStatement daily_;
  const SqliteStatement emptyDaily_;
  const SqliteStatement emptyMemory_;
  const SqliteStatement crash_;
  const SqliteStatement emptyCrash_;
  std::map<Key, SessionSummary, Less> pending_;  ///< of the present transaction
};

}  // namespace qel::collector
