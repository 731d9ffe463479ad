#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tools/collector/SqliteSummaries.h"

namespace qel::collector {

/// Deletes rows of one table, and corrects the summaries: what is left of an affected session is
/// summed up again. A row without a session is subtracted. The rows of a session are found by their
/// keys.
class SqliteRemoval {
 public:
  /// Both must outlive this object.
  SqliteRemoval(SqliteConnection& connection, SqliteSummaries& summaries, const std::string& table);

  /// Deletes the rows with these IDs. Needs a transaction of `SqliteSummaries::change`.
  void remove(const std::vector<std::int64_t>& ids);

 private:
  using Session = std::tuple<std::string, std::string>;  ///< session, installation

  struct Table {
    SqliteStatement row;
    SqliteStatement rowsOfSession;
    void (SessionSummary::*add)(const SummedRow& row);
  };

  Table prepareTable(const std::string& name, void (SessionSummary::*add)(const SummedRow& row));
  std::set<Session> subtract(const Table& table, const std::vector<std::int64_t>& ids);
  void forget(const Session& session);
  void sumUp(const Table& table, const Session& session);

  SqliteConnection& connection_;
  SqliteSummaries& summaries_;
  const SqliteStatement removal_;
  const std::array<Table, 2> tables_;  ///< those that are summed up
  const Table* const table_;           ///< the one of this object; null if it is not summed up
  const SqliteStatement session_;
  const SqliteStatement removalOfDays_;
  const SqliteStatement removalOfCrashes_;
  const SqliteStatement removalOfSession_;
};

}  // namespace qel::collector
