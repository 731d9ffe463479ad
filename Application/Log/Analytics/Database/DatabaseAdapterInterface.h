#pragma once

#include <map>
#include <string>
#include <vector>

#include "QelAnalyticsExport.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::log::analytics::details {

/// Tables of JSON rows, each row an ID and a text.
class QEL_ANALYTICS_EXPORT DatabaseAdapterInterface {
 public:
  virtual void addTableIfNotExists(const std::string& table) = 0;
  virtual void insert(const std::string& json, const std::string& table) = 0;
  virtual std::map<int, std::string> getAll(const std::string& table) = 0;
  virtual std::map<int, std::string> getAllFromSession(const std::string& table,
                                                       const std::string& sessionId) = 0;
  virtual void deleteByIds(const std::vector<int>& ids, const std::string& table) = 0;
  virtual void vacuum() = 0;
  /// What is inserted while the guard lives is stored together or not at all.
  virtual ScopeGuard createTransaction() = 0;
  virtual ~DatabaseAdapterInterface() = default;
};

}  // namespace qel::log::analytics::details
