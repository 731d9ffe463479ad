#pragma once

#include <map>
#include <string>
#include <vector>

#include "QelAnalyticsExport.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::log::analytics::details {

/// Tables of JSON rows. Each row has an ID and a JSON text.
class QEL_ANALYTICS_EXPORT DatabaseAdapterInterface {
 public:
  /// Creates the table if it does not exist.
  virtual void addTableIfNotExists(const std::string& table) = 0;
  /// Adds a row. The database assigns the ID.
  virtual void insert(const std::string& json, const std::string& table) = 0;
  /// The JSON texts of all rows, keyed by ID. Empty if reading fails.
  virtual std::map<int, std::string> getAll(const std::string& table) = 0;
  /// The JSON texts of the rows of one session, keyed by ID. Empty if reading fails.
  virtual std::map<int, std::string> getAllFromSession(const std::string& table,
                                                       const std::string& sessionId) = 0;
  /// Deletes the rows with these IDs. IDs without a row are ignored.
  virtual void deleteByIds(const std::vector<int>& ids, const std::string& table) = 0;
  /// Returns free pages of the file to the file system.
  virtual void vacuum() = 0;
  /// Begins a transaction, which ends when the returned guard is destroyed. Its rows are stored
  /// together or not at all.
  virtual ScopeGuard createTransaction() = 0;
  virtual ~DatabaseAdapterInterface() = default;
};

}  // namespace qel::log::analytics::details
