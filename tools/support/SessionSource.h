#pragma once

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"
#include "tools/records/Session.h"

namespace qel::support {

/// Provides the rows of one session to the exporter. A store's row with a count is provided that
/// often; reading throws `qel::exception` if a table has over a million such copies. Write
/// operations do nothing.
class SessionSource : public log::analytics::CipDatabaseClientInterface {
 public:
  /// The session and its database must outlive this object.
  explicit SessionSource(const records::Session& session) : session_(session) {}

  std::map<Table, RowMap> getAllFromSession(std::string sessionId) override;
  std::pair<Table, RowMap> getAll(Table table) override { return {table, rowsOf(table)}; }
  RowMap getAllItems() override { return rowsOf(Items); }

  void initialize(const std::string& /*directory*/) override {}
  void insertMultiple(const std::vector<std::string>& /*jsons*/, Table /*table*/) override {}
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& /*rows*/) override {}
  void deleteItems(const RowMap& /*rows*/) override {}
  void deleteEnvironments(RowMap /*rows*/) override {}
  void vacuum() override {}
  void deleteByIds(Table /*table*/, std::vector<int>& /*ids*/) override {}

 private:
  RowMap rowsOf(Table table) const;

  const records::Session& session_;
};

}  // namespace qel::support
