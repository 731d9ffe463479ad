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
  /// Creates the table unless the file has it.
  virtual void addTableIfNotExists(const std::string& table) = 0;
  /// Adds a row; the database gives it its ID.
  virtual void insert(const std::string& json, const std::string& table) = 0;
  /// The texts of all rows by their IDs, none when reading fails.
  virtual std::map<int, std::string> getAll(const std::string& table) = 0;
  /// The same of one session's rows.
  virtual std::map<int, std::string> getAllFromSession(const std::string& table,
                                                       const std::string& sessionId) = 0;
  /// Deletes the rows with these IDs; an ID without a row is passed over.
  virtual void deleteByIds(const std::vector<int>& ids, const std::string& table) = 0;
  /// Gives the file's free pages back to the file system.
  virtual void vacuum() = 0;
  /// What is inserted while the guard lives is stored together or not at all.
  virtual ScopeGuard createTransaction() = 0;
  virtual ~DatabaseAdapterInterface() = default;
};

}  // namespace qel::log::analytics::details
