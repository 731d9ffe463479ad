#include "tools/support/SessionSource.h"

#include <cstdint>
#include <limits>
#include <string_view>

namespace qel::support {

std::map<SessionSource::Table, SessionSource::RowMap> SessionSource::getAllFromSession(
    std::string sessionId) {
  if (sessionId != session_.id) {
    return {};
  }
  return {{Environments, rowsOf(Environments)}, {Items, rowsOf(Items)}};
}

SessionSource::RowMap SessionSource::rowsOf(Table table) const {
  RowMap rows;
  forEachRecord(session_, table == Items ? itemsTable : environmentsTable,
                [&](std::int64_t id, std::string_view row) {
                  const bool fits = id <= std::numeric_limits<int>::max();
                  if (fits) {
                    rows.emplace_hint(rows.end(), static_cast<int>(id), row);
                  }
                  return fits;
                });
  return rows;
}

}  // namespace qel::support
