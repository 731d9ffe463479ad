#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"
#include "Application/Log/Analytics/Database/DatabaseAdapterInterface.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::log::analytics::details {

/// What the two database clients have in common: reading and deleting rows through an adapter, once
/// there is one.
class QEL_ANALYTICS_EXPORT DatabaseClientBase : public CipDatabaseClientInterface {
 public:
  RowMap getAllItems() override;
  void deleteItems(const RowMap& rows) override;
  std::pair<Table, RowMap> getAll(Table table) override;
  void deleteEnvironments(RowMap rows) override;
  void vacuum() override;
  void deleteByIds(Table table, std::vector<int>& ids) override;

 protected:
  /// Creates both tables through the adapter.
  static void addTables(DatabaseAdapterInterface& adapter);
  /// Takes the adapter and its database file into use, in place of earlier ones.
  void use(std::shared_ptr<DatabaseAdapterInterface> adapter, std::filesystem::path file);
  /// The adapter, null before there is one.
  std::shared_ptr<DatabaseAdapterInterface> adapter() const;
  /// The database file, empty before there is one.
  std::filesystem::path file() const;
  /// Inserts the texts that are not empty, of known tables, in one transaction.
  static void insertTogether(DatabaseAdapterInterface& adapter,
                             const std::vector<std::pair<std::string, Table>>& rows);
  /// Inserts each text that is not empty, until the calling thread can wait no longer.
  static void insertEach(DatabaseAdapterInterface& adapter, const std::vector<std::string>& jsons,
                         const std::string& table);

 private:
  mutable utilities::Mutex mutex_;
  std::shared_ptr<DatabaseAdapterInterface> adapter_ QEL_GUARDED_BY(mutex_);
  std::filesystem::path file_ QEL_GUARDED_BY(mutex_);
};

/// The SQL table's name; null for a value that is no table.
const std::string* tableName(CipDatabaseClientInterface::Table table);

}  // namespace qel::log::analytics::details
