#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "tools/collector/ClickHouseConnection.h"
#include "tools/collector/ClickHouseRows.h"
#include "tools/collector/Store.h"

namespace qel::collector {

/// The received packages, in a database of ClickHouse that any number of collectors use. The file
/// deploy/clickhouse/single.sql describes its tables.
///
/// **Inserts.** All packages of an `add` become one insert for each table. ClickHouse has no
/// transactions, so after an exception any number of the rows may be stored. They have the same
/// keys when they are sent again, and questions with `FINAL` see each key once.
class ClickHouseStore : public Store {
 public:
  enum class Missing { Create, Fail };

  /// Checks the schema. Throws `StoreError`.
  ClickHouseStore(const ClickHouseAccess& access, Missing missing);

  void add(const Uploads& uploads, std::chrono::steady_clock::time_point deadline) override;
  /// Deletes all rows that were received before the day of this time, unless ClickHouse is still
  /// deleting. ClickHouse rewrites the parts that have such rows.
  bool removeSome(std::chrono::system_clock::time_point before) override;
  StoreSize size() const override;

  /// Inserts and forgets the rows.
  void insert(ClickHouseRows& rows, std::chrono::steady_clock::time_point deadline);

 private:
  void remove(const std::string& table, const std::string& condition);
  void measure(std::chrono::steady_clock::time_point deadline);

  ClickHouseConnection connection_;
  std::vector<std::string> insertions_;
  ClickHouseRows rows_;
  bool isDoubtful_ = false;  ///< whether the last transaction failed
  std::chrono::steady_clock::time_point nextMeasurement_;
  std::atomic<std::uint64_t> bytes_ = 0;
};

}  // namespace qel::collector
