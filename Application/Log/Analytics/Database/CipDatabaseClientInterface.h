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
/// Before `initialize`, all other operations do nothing and return empty results. After
/// `initialize`, they are thread-safe. `initialize` itself must be called on the host's thread, and
/// not concurrently with the other operations. SQL failures do not throw.
class QEL_ANALYTICS_EXPORT CipDatabaseClientInterface {
 public:
  /// The tables. Operations ignore any other value unless an implementation documents otherwise.
  enum Table : std::uint32_t { Environments = 0, Items = 1 };

  /// Maps the ID of a row to its JSON text.
  using RowMap = std::map<int, std::string>;

  /// Opens or creates the database file in `directory` (UTF-8). Throws `qel::exception` if that
  /// fails.
  virtual void initialize(const std::string& directory) = 0;
  /// Inserts each non-empty string as a row, one by one.
  virtual void insertMultiple(const std::vector<std::string>& jsons, Table table) = 0;
  /// Inserts all non-empty strings as rows, or none of them.
  virtual void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) = 0;
  /// The rows of `Items`.
  virtual RowMap getAllItems() = 0;
  /// Deletes the rows of `Items` whose IDs are in `rows`. The texts in `rows` are ignored.
  virtual void deleteItems(const RowMap& rows) = 0;
  /// Returns `table` and the rows of that table.
  virtual std::pair<Table, RowMap> getAll(Table table) = 0;
  /// The rows of one session, keyed by table. Empty if the implementation does not select rows by
  /// session.
  virtual std::map<Table, RowMap> getAllFromSession(std::string sessionId) = 0;
  /// Deletes the rows of `Environments` whose IDs are in `rows`. The texts in `rows` are ignored.
  virtual void deleteEnvironments(RowMap rows) = 0;
  /// Returns free pages of the file to the file system.
  virtual void vacuum() = 0;
  /// Deletes the rows with these IDs from the table. Does not change the vector.
  virtual void deleteByIds(Table table, std::vector<int>& ids) = 0;
  virtual ~CipDatabaseClientInterface() = default;
};

}  // namespace qel::log::analytics
