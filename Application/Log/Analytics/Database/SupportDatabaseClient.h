#pragma once

#include <chrono>
#include <optional>

#include "Application/Log/Analytics/Database/DatabaseClientBase.h"

namespace qel::log::analytics {

/// The support database, "SupportDatabase.db": a copy of every item with the time of its writing,
/// so that the rows of a session can be handed to support staff. It has no size limit; its rows go
/// by age.
class QEL_ANALYTICS_EXPORT SupportDatabaseClient : public details::DatabaseClientBase {
 public:
  /// Rows older than `retention` are deleted once at each `initialize`, on a thread of its own;
  /// without one everything is kept.
  explicit SupportDatabaseClient(std::optional<std::chrono::seconds> retention);

  void initialize(const std::string& directory) override;
  /// Any table but `Items` counts as `Environments`.
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override;
  /// The session's rows of both tables, also where a table has none.
  std::map<Table, RowMap> getAllFromSession(std::string sessionId) override;

 private:
  const std::optional<std::chrono::seconds> retention_;
};

}  // namespace qel::log::analytics
