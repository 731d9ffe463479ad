#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics {

/// A database file with two tables of JSON rows.
///
/// Before `initialize`, all other operations do nothing and return empty results. After it, several
/// threads may call them. `initialize` itself belongs to the host's thread and must not run at the
/// same time as the others. SQL failures are not thrown.
class QEL_ANALYTICS_EXPORT CipDatabaseClientInterface {
 public:
  /// Operations ignore any other value unless an implementation documents otherwise.
  enum Table : std::uint32_t { Environments = 0, Items = 1 };

  /// Maps the ID of a row to its JSON text.
  using RowMap = std::map<int, std::string>;

  /// Opens or creates the database file in `directory` (UTF-8). Throws `qel::exception` when that
  /// is not possible.
  virtual void initialize(const std::string& directory) = 0;
  /// Inserts each text that is not empty, one by one.
  virtual void insertMultiple(const std::vector<std::string>& jsons, Table table) = 0;
  /// Inserts all texts that are not empty, or none of them.
  virtual void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) = 0;
  /// The rows of `Items`.
  virtual RowMap getAllItems() = 0;
  /// Deletes the rows of `Items` with the IDs of `rows`. The texts are ignored.
  virtual void deleteItems(const RowMap& rows) = 0;
  /// The value of `table` and the rows of the table.
  virtual std::pair<Table, RowMap> getAll(Table table) = 0;
  /// The rows of one session by table, if the implementation selects rows by session.
  virtual std::map<Table, RowMap> getAllFromSession(std::string sessionId) = 0;
  /// Deletes the rows of `Environments` with the IDs of `rows`. The texts are ignored.
  virtual void deleteEnvironments(RowMap rows) = 0;
  /// Returns free pages of the file to the file system.
  virtual void vacuum() = 0;
  /// Deletes the rows of the table with these IDs. Does not change the vector.
  virtual void deleteByIds(Table table, std::vector<int>& ids) = 0;
  virtual ~CipDatabaseClientInterface() = default;
};

}  // namespace qel::log::analytics
