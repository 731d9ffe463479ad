#include "tools/support/SessionSource.h"

#include <cstdint>

#include "host/QelUtilities/Exception.h"

namespace qel::support {

std::map<SessionSource::Table, SessionSource::RowMap> SessionSource::getAllFromSession(
    std::string sessionId) {
  if (sessionId != session_.id) {
    return {};
  }
  return {{Environments, rowsOf(Environments)}, {Items, rowsOf(Items)}};
}

SessionSource::RowMap SessionSource::rowsOf(Table table) const {
  constexpr std::int64_t mostCopies = 1'000'000;
  RowMap rows;
  std::int64_t copies = 0;
  const auto source = table == Items ? records::Table::Events : records::Table::Environments;
  int number = 0;  // A store has one row for equal texts, so that its IDs are not enough.
  session_.source->forEachRecord(session_.id, source, [&](const records::Row& row) {
    copies += row.count - 1;
    if (copies > mostCopies) {
      throw qel::exception("the session has more than 1,000,000 copies of equal records");
    }
    for (std::int64_t copy = 0; copy < row.count; ++copy) {
      rows.emplace_hint(rows.end(), ++number, row.text);
    }
    return true;
  });
  return rows;
}

}  // namespace qel::support
