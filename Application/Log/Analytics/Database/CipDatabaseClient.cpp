#include "Application/Log/Analytics/Database/CipDatabaseClient.h"

#include <memory>
#include <system_error>
#include <utility>

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"
#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics {
void CipDatabaseClient::initialize(const std::string& directory) {
  const utilities::Patience none(utilities::Patience::none);
  auto path = utilities::pathFromUtf8(directory) / format::sendingDatabase;
  auto adapter = std::make_shared<details::DatabaseAdapter>(
      std::make_shared<qel::db::sql::SqlDatabaseAdapter>(path));
  addTables(*adapter);
  use(std::move(adapter), std::move(path));
}

void CipDatabaseClient::insertMultiple(const std::vector<std::string>& jsons, Table table) {
  const auto open = adapter();
  const auto* const name = details::tableName(table);
  if (open != nullptr && name != nullptr) {
    insertEach(*open, jsons, *name);
  }
}

void CipDatabaseClient::insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) {
  const auto open = adapter();
  if (open == nullptr) {
    return;
  }
  const auto size = getDatabaseFileSize();
  if (!size) {
    return;
  }
  if (*size >= format::sendingDatabaseLimit) {
    reportCriticalLevel(*open);
    return;
  }
  insertTogether(*open, rows);
  criticalLevelReported_ = false;
}

std::map<CipDatabaseClientInterface::Table, CipDatabaseClientInterface::RowMap>
CipDatabaseClient::getAllFromSession(std::string /*sessionId*/) {
  return {};
}

std::optional<std::uint64_t> CipDatabaseClient::getDatabaseFileSize() {
  std::error_code unreadable;  // on error, the size is the maximum, which counts as full
  return std::filesystem::file_size(file(), unreadable);
}

void CipDatabaseClient::reportCriticalLevel(details::DatabaseAdapterInterface& adapter) {
  if (criticalLevelReported_.exchange(true)) {
    return;
  }
  const items::CipInfoItem marker(items::CipInfoItem::Area::Database,
                                  items::CipInfoItem::Severity::CriticalLarge);
  insertEach(adapter, {marker.toJson()}, *details::tableName(Items));
}

}  // namespace qel::log::analytics
