#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "host/QelSql/SqlDatabaseAdapter.h"

namespace qel::c {

/// How many rows the databases of a client could not store.
struct LostRows {
  std::atomic<std::size_t> forSupport{0};
  std::atomic<std::size_t> forSending{0};
};

/// A database client that counts the rows of the batches that it could not store.
template <typename DatabaseClient>
class LossCountingDatabaseClient : public DatabaseClient {
 public:
  using Table = typename DatabaseClient::Table;

  /// `lost` must outlive the client.
  template <typename... Arguments>
  explicit LossCountingDatabaseClient(std::atomic<std::size_t>& lost, const Arguments&... arguments)
      : DatabaseClient(arguments...), lost_(lost) {}

  using DatabaseClient::insertMultiple;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override {
    const auto committed = db::sql::SqlDatabaseAdapter::committedByThisThread();
    DatabaseClient::insertMultiple(rows);
    if (db::sql::SqlDatabaseAdapter::committedByThisThread() == committed) {
      lost_ += rows.size();
    }
  }

 private:
  std::atomic<std::size_t>& lost_;
};

}  // namespace qel::c
