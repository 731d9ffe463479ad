#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "Application/Log/Analytics/Database/DatabaseClientBase.h"

namespace qel::log::analytics {

/// The sending database, "ItemDatabase.db". Its rows wait to be uploaded.
///
/// While the file has 30720000 bytes or more, batches are dropped. One "CriticalLarge" row records
/// this. Another such row is written only if a batch has been stored in between.
class QEL_ANALYTICS_EXPORT CipDatabaseClient : public details::DatabaseClientBase {
 public:
  void initialize(const std::string& directory) override;
  /// Uses no transaction and ignores the size limit.
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override;
  /// Always returns an empty map, because this database does not select rows by session.
  std::map<Table, RowMap> getAllFromSession(std::string sessionId) override;

  /// The size of the file in bytes, or the largest value of the type if the size cannot be read. If
  /// an override returns no value, no batch is written.
  virtual std::optional<std::uint64_t> getDatabaseFileSize();

 private:
  void reportCriticalLevel(details::DatabaseAdapterInterface& adapter);

  std::atomic<bool> criticalLevelReported_{false};
};

}  // namespace qel::log::analytics
