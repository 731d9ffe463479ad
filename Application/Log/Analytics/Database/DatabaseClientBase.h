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

/// The common part of both database clients. It reads and deletes rows through an adapter.
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
  /// Sets the adapter and its database file, and replaces any earlier ones.
  void use(std::shared_ptr<DatabaseAdapterInterface> adapter, std::filesystem::path file);
  /// The adapter, null until it is set.
  std::shared_ptr<DatabaseAdapterInterface> adapter() const;
  /// The database file, empty until it is set.
  std::filesystem::path file() const;
  /// Inserts the non-empty strings that belong to a known table, in one transaction.
  static void insertTogether(DatabaseAdapterInterface& adapter,
                             const std::vector<std::pair<std::string, Table>>& rows);
  /// Inserts each non-empty string. Skips the remaining strings once a wait has used up the calling
  /// thread's patience (its limit for waiting, see `utilities::Patience`).
  static void insertEach(DatabaseAdapterInterface& adapter, const std::vector<std::string>& jsons,
                         const std::string& table);

 private:
  mutable utilities::Mutex mutex_;
  std::shared_ptr<DatabaseAdapterInterface> adapter_ QEL_GUARDED_BY(mutex_);
  std::filesystem::path file_ QEL_GUARDED_BY(mutex_);
};

/// The name of the SQL table, null for an unknown value.
const std::string* tableName(CipDatabaseClientInterface::Table table);

}  // namespace qel::log::analytics::details
