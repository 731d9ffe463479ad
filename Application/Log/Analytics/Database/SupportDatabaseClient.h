#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "Application/Log/Analytics/Database/DatabaseClientBase.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics {

/// The support database, "SupportDatabase.db". It holds a copy of every item and the time when it
/// was written, so that support staff can get the rows of a session. It has no size limit. Rows are
/// deleted by age.
class QEL_ANALYTICS_EXPORT SupportDatabaseClient : public details::DatabaseClientBase {
 public:
  /// Each `initialize` deletes the rows older than `retention` once, on a separate thread. If
  /// `retention` has no value, all rows are kept.
  explicit SupportDatabaseClient(std::optional<std::chrono::seconds> retention);
  /// The deletion of old rows goes on for at most a second, and at most until the exit deadline.
  /// The next `initialize` deletes the rows that are left.
  ~SupportDatabaseClient() override;

  void initialize(const std::string& directory) override;
  /// Any table other than `Items` counts as `Environments`.
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override;
  /// The rows of the session. The map has an entry for each of the two tables, even if the table
  /// has no such rows.
  std::map<Table, RowMap> getAllFromSession(std::string sessionId) override;

 private:
  const std::optional<std::chrono::seconds> retention_;
  const std::shared_ptr<utilities::Patience::StopTime> retentionStop_;
};

}  // namespace qel::log::analytics
