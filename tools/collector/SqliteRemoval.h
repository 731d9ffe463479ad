#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/collector/SqliteSummaries.h"

namespace qel::collector {

/// Deletes rows of one table, and subtracts them from the summaries.
class SqliteRemoval {
 public:
  /// Both must outlive this object.
  SqliteRemoval(SqliteConnection& connection, SqliteSummaries& summaries, const std::string& table);

  /// Deletes the rows with these IDs. Needs a transaction of `SqliteSummaries::change`.
  void remove(const std::vector<std::int64_t>& ids);

 private:
  using Count = void (SessionSummary::*)(const SummedRow& row);

  SqliteConnection& connection_;
  SqliteSummaries& summaries_;
  const Count count_;  ///< null if the table is not summed up
  const SqliteStatement removal_;
};

}  // namespace qel::collector
