#pragma once

#include <chrono>
#include <optional>

#include "Application/Log/Analytics/Database/DatabaseClientBase.h"

namespace qel::log::analytics {

/// The support database, "SupportDatabase.db". It holds a copy of every item with the time of
/// writing, so that support staff can get the rows of a session. It has no size limit. Rows are
/// deleted by age.
class QEL_ANALYTICS_EXPORT SupportDatabaseClient : public details::DatabaseClientBase {
 public:
  /// Each `initialize` deletes the rows older than `retention` once, on a separate thread. Without
  /// a value all rows are kept.
  explicit SupportDatabaseClient(std::optional<std::chrono::seconds> retention);

  void initialize(const std::string& directory) override;
  /// Any table other than `Items` counts as `Environments`.
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override;
  /// The session's rows, with an entry for each of both tables even if it is empty.
  std::map<Table, RowMap> getAllFromSession(std::string sessionId) override;

 private:
  const std::optional<std::chrono::seconds> retention_;
};

}  // namespace qel::log::analytics
