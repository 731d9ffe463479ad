#include "Application/Log/Analytics/Database/DatabaseClientBase.h"

namespace qel::log::analytics::details {
namespace {

// Never destroyed: the retention thread may still run while the process exits.
const std::string& itemsTable = *new std::string("Items");
const std::string& environmentsTable = *new std::string("Environments");

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
  auto* const open = adapter();
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
  if (auto* const open = adapter()) {
    open->vacuum();
  }
}

void DatabaseClientBase::deleteByIds(Table table, std::vector<int>& ids) {
  auto* const open = adapter();
  const auto* const name = tableName(table);
  if (open != nullptr && name != nullptr) {
    open->deleteByIds(ids, *name);
  }
}

void DatabaseClientBase::addTables(DatabaseAdapterInterface& adapter) {
  adapter.addTableIfNotExists(itemsTable);
  adapter.addTableIfNotExists(environmentsTable);
}

void DatabaseClientBase::use(std::shared_ptr<DatabaseAdapterInterface> adapter) {
  adapter_ = std::move(adapter);
  initialized_ = true;
}

DatabaseAdapterInterface* DatabaseClientBase::adapter() const {
  return initialized_ ? adapter_.get() : nullptr;
}

void DatabaseClientBase::insertTogether(DatabaseAdapterInterface& adapter,
                                        const std::vector<std::pair<std::string, Table>>& rows) {
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
  for (const auto& json : jsons) {
    if (!json.empty()) {
      adapter.insert(json, table);
    }
  }
}

}  // namespace qel::log::analytics::details
