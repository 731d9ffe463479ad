#include "tools/collector/SqliteRemoval.h"

namespace qel::collector {

SqliteRemoval::SqliteRemoval(SqliteConnection& connection, SqliteSummaries& summaries,
                             const std::string& table)
    : connection_(connection),
      summaries_(summaries),
      count_(table == "events"         ? &SessionSummary::countEvent
             : table == "environments" ? &SessionSummary::countEnvironment
                                       : nullptr),
      removal_(connection.prepare(
          "DELETE FROM " + table + " WHERE id = ?" +
          (count_ == nullptr ? "" : " RETURNING " + SqliteSummaries::columnsOf(table)))) {}

void SqliteRemoval::remove(const std::vector<std::int64_t>& ids) {
  for (const std::int64_t id : ids) {
    SqliteExecution execution(connection_, removal_);
    if (execution.bindNumber(id).step()) {
      SummedRow row = SqliteSummaries::rowOf(execution);
      row.count = -row.count;
      (summaries_.of(row).*count_)(row);
    }
  }
}

}  // namespace qel::collector
