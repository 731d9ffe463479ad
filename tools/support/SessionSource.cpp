#include "tools/support/SessionSource.h"

#include <cstdint>
#include <limits>
#include <string_view>

namespace qel::support {

std::map<SessionSource::Table, SessionSource::RowMap> SessionSource::getAllFromSession(
    std::string sessionId) {
  const auto mark = sessionMark(sessionId);
  return {{Environments, rowsThatHold(mark, Environments)}, {Items, rowsThatHold(mark, Items)}};
}

std::pair<SessionSource::Table, SessionSource::RowMap> SessionSource::getAll(Table table) {
  return {table, rowsThatHold("", table)};
}

SessionSource::RowMap SessionSource::rowsThatHold(const std::string& text, Table table) {
  RowMap rows;
  database_.forEachRow(table == Items ? itemsTable : environmentsTable,
                       [&](std::int64_t id, std::string_view row) {
                         const bool has = row.find(text) != std::string_view::npos;
                         if (has && id <= std::numeric_limits<int>::max()) {
                           rows.emplace_hint(rows.end(), static_cast<int>(id), row);
                         }
                         return true;
                       });
  return rows;
}

}  // namespace qel::support
