#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics {

/// The storage that the rest of the client sees: two tables of JSON rows in one database file.
///
/// Nothing works before `initialize`: every other operation does nothing then and returns empty
/// results. SQL failures are not thrown. After `initialize` all operations may be called from
/// several threads; `initialize` itself belongs to the host's thread and must not run beside them.
class QEL_ANALYTICS_EXPORT CipDatabaseClientInterface {
 public:
  /// Any other value is ignored by every operation, unless an implementation says otherwise.
  enum Table : std::uint32_t { Environments = 0, Items = 1 };

  /// From a row's ID to its JSON text.
  using RowMap = std::map<int, std::string>;

  /// Opens or creates the database file in `directory` (UTF-8). Throws `qel::exception` when that
  /// is not possible.
  virtual void initialize(const std::string& directory) = 0;
  /// Inserts each text that is not empty, one by one.
  virtual void insertMultiple(const std::vector<std::string>& jsons, Table table) = 0;
  /// Inserts the texts that are not empty together, or not at all.
  virtual void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) = 0;
  /// The rows of `Items`.
  virtual RowMap getAllItems() = 0;
  /// Deletes from `Items` by the IDs of `rows`; their texts do not count.
  virtual void deleteItems(const RowMap& rows) = 0;
  /// The table's rows, beside `table` as it was given.
  virtual std::pair<Table, RowMap> getAll(Table table) = 0;
  /// The rows of one session, by table, as far as the implementation keeps such a view.
  virtual std::map<Table, RowMap> getAllFromSession(std::string sessionId) = 0;
  /// Deletes from `Environments`, as `deleteItems` does from `Items`.
  virtual void deleteEnvironments(RowMap rows) = 0;
  /// Gives the file's free pages back to the file system.
  virtual void vacuum() = 0;
  /// Deletes the table's rows with these IDs. The vector stays as it is.
  virtual void deleteByIds(Table table, std::vector<int>& ids) = 0;
  virtual ~CipDatabaseClientInterface() = default;
};

}  // namespace qel::log::analytics
