#include "tools/sample-host/StoredRows.h"

#include <string>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/Patience.h"

namespace qel::samplehost {
namespace {

using qel::db::sql::SqlDatabaseAdapter;
namespace format = qel::log::analytics::format;

/// The number of rows that meet `condition`; zero if the table does not exist.
std::int64_t count(SqlDatabaseAdapter& database, const std::string& table,
                   const std::string& condition) {
  const auto rows =
      database.execute("SELECT COUNT(*) FROM " + table + " WHERE " + condition).result();
  return rows.empty() ? 0 : std::stoll(rows.front().front());
}

/// The SQL condition that a row contains `text`, which must not contain an apostrophe.
std::string holds(const std::string& text) { return "instr(json, '" + text + "') > 0"; }

std::int64_t countInBoth(SqlDatabaseAdapter& database, const std::string& condition) {
  return count(database, format::itemsTable, condition) +
         count(database, format::environmentsTable, condition);
}

}  // namespace

StoredRows countStoredRows(const std::filesystem::path& directory, const qel::Guid& session) {
  const utilities::Patience patience(utilities::Patience::ofExport);
  SqlDatabaseAdapter sending(directory / format::sendingDatabase);
  SqlDatabaseAdapter support(directory / format::supportDatabase);
  StoredRows rows;
  rows.forSending = countInBoth(sending, "TRUE");
  rows.forSupport = countInBoth(support, holds(format::sessionMark(session.toString(false))));
  rows.fullMarkers =
      count(sending, format::itemsTable,
            holds(R"("Category": "CIP", "Subcategory": "Database", "Event": "CriticalLarge")"));
  return rows;
}

}  // namespace qel::samplehost
