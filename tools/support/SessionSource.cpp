#include "tools/support/SessionSource.h"

#include <limits>

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
  const auto source = table == Items ? records::Table::Events : records::Table::Environments;
  session_.source->forEachRecord(session_.id, source, [&](const records::Row& row) {
    const bool fits = row.id <= std::numeric_limits<int>::max();
    if (fits) {
      rows.emplace_hint(rows.end(), static_cast<int>(row.id), row.text);
    }
    return fits;
  });
  return rows;
}

}  // namespace qel::support
