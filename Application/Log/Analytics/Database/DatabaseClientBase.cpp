#include "Application/Log/Analytics/Database/DatabaseClientBase.h"

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics::details {
namespace {

using utilities::Patience;

// Never destroyed, because the retention thread may still run while the process exits.
const std::string& itemsTable = *new std::string(format::itemsTable);
const std::string& environmentsTable = *new std::string(format::environmentsTable);

std::vector<int> idsOf(const CipDatabaseClientInterface::RowMap& rows) {
  std::vector<int> ids;
  ids.reserve(rows.size());
  for (const auto& [id, json] : rows) {
    ids.push_back(id);
  }
  return ids;
}

}  // namespace

const std::string* tableName(CipDatabaseClientInterface::Table table) {
  switch (table) {
    case CipDatabaseClientInterface::Environments:
      return &environmentsTable;
    case CipDatabaseClientInterface::Items:
      return &itemsTable;
  }
  return nullptr;
}

CipDatabaseClientInterface::RowMap DatabaseClientBase::getAllItems() {
  return getAll(Items).second;
}

void DatabaseClientBase::deleteItems(const RowMap& rows) {
  auto ids = idsOf(rows);
  deleteByIds(Items, ids);
}

std::pair<CipDatabaseClientInterface::Table, CipDatabaseClientInterface::RowMap>
DatabaseClientBase::getAll(Table table) {
  const auto open = adapter();
  const auto* const name = tableName(table);
  if (open == nullptr || name == nullptr) {
    return {table, {}};
  }
  return {table, open->getAll(*name)};
}

void DatabaseClientBase::deleteEnvironments(RowMap rows) {
  auto ids = idsOf(rows);
  deleteByIds(Environments, ids);
}

void DatabaseClientBase::vacuum() {
  if (const auto open = adapter()) {
    open->vacuum();
  }
}

void DatabaseClientBase::deleteByIds(Table table, std::vector<int>& ids) {
  const Patience patience;
  const auto open = adapter();
  const auto* const name = tableName(table);
  if (open != nullptr && name != nullptr) {
    open->deleteByIds(ids, *name);
  }
}

void DatabaseClientBase::addTables(DatabaseAdapterInterface& adapter) {
  adapter.addTableIfNotExists(itemsTable);
  adapter.addTableIfNotExists(environmentsTable);
}

void DatabaseClientBase::use(std::shared_ptr<DatabaseAdapterInterface> adapter,
                             std::filesystem::path file) {
  const utilities::MutexLock lock(mutex_);
  adapter_.swap(adapter);
  file_.swap(file);
}

std::shared_ptr<DatabaseAdapterInterface> DatabaseClientBase::adapter() const {
  const utilities::MutexLock lock(mutex_);
  return adapter_;
}

std::filesystem::path DatabaseClientBase::file() const {
  const utilities::MutexLock lock(mutex_);
  return file_;
}

void DatabaseClientBase::insertTogether(DatabaseAdapterInterface& adapter,
                                        const std::vector<std::pair<std::string, Table>>& rows) {
  const Patience patience;
  const auto transaction = adapter.createTransaction();
  for (const auto& [json, table] : rows) {
    const auto* const name = tableName(table);
    if (name != nullptr && !json.empty()) {
      adapter.insert(json, *name);
    }
  }
}

void DatabaseClientBase::insertEach(DatabaseAdapterInterface& adapter,
                                    const std::vector<std::string>& jsons,
                                    const std::string& table) {
  const Patience patience;
  for (const auto& json : jsons) {
    if (!json.empty() && !Patience::hasGivenUp()) {
      adapter.insert(json, table);
    }
  }
}

}  // namespace qel::log::analytics::details
