#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "Application/Log/Analytics/Database/DatabaseClientBase.h"

namespace qel::log::analytics {

/// The sending database, "ItemDatabase.db": what is stored here waits to be uploaded.
///
/// While the file holds 30720000 bytes or more, batches are dropped; one "CriticalLarge" row marks
/// that, until a batch fits again.
class QEL_ANALYTICS_EXPORT CipDatabaseClient : public details::DatabaseClientBase {
 public:
  void initialize(const std::string& directory) override;
  /// Neither in one transaction nor subject to the size limit.
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override;
  /// Always empty: this database keeps no view of sessions.
  std::map<Table, RowMap> getAllFromSession(std::string sessionId) override;

  /// The file's size in bytes, all bits set when it cannot be read. Nothing is written without a
  /// value.
  virtual std::optional<std::uint64_t> getDatabaseFileSize();

 private:
  void reportCriticalLevel(details::DatabaseAdapterInterface& adapter);

  std::atomic<bool> criticalLevelReported_{false};
};

}  // namespace qel::log::analytics
