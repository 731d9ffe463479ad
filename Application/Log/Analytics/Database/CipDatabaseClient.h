#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "Application/Log/Analytics/Database/DatabaseClientBase.h"

namespace qel::log::analytics {

/// The sending database, "ItemDatabase.db". Its rows wait for their upload.
///
/// While the file has 30720000 bytes or more, batches are dropped. One "CriticalLarge" row records
/// this. The next such row can follow only after a batch has fitted again.
class QEL_ANALYTICS_EXPORT CipDatabaseClient : public details::DatabaseClientBase {
 public:
  void initialize(const std::string& directory) override;
  /// Uses no transaction and ignores the size limit.
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override;
  /// Always empty: this database does not select rows by session.
  std::map<Table, RowMap> getAllFromSession(std::string sessionId) override;

  /// The file's size in bytes, all bits set if it cannot be read. Without a value no batch is
  /// written.
  virtual std::optional<std::uint64_t> getDatabaseFileSize();

 private:
  void reportCriticalLevel(details::DatabaseAdapterInterface& adapter);

  std::atomic<bool> criticalLevelReported_{false};
};

}  // namespace qel::log::analytics
