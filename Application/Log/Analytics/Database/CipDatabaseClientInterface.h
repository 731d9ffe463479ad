#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics {

/// Two tables of JSON rows, one for items and one for descriptions of the environment.
class QEL_ANALYTICS_EXPORT CipDatabaseClientInterface {
 public:
  /// Every operation ignores other values.
  enum Table : std::uint32_t { Environments = 0, Items = 1 };

  /// JSON texts by row id.
  using RowMap = std::map<int, std::string>;

  virtual void initialize(const std::string& directory) = 0;
  virtual void insertMultiple(const std::vector<std::string>& jsons, Table table) = 0;
  virtual void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) = 0;
  virtual RowMap getAllItems() = 0;
  virtual void deleteItems(const RowMap& rows) = 0;
  virtual std::pair<Table, RowMap> getAll(Table table) = 0;
  virtual std::map<Table, RowMap> getAllFromSession(std::string sessionId) = 0;
  virtual void deleteEnvironments(RowMap rows) = 0;
  virtual void vacuum() = 0;
  virtual void deleteByIds(Table table, std::vector<int>& ids) = 0;

  virtual ~CipDatabaseClientInterface() = default;
};

}  // namespace qel::log::analytics
