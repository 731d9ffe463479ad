#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::samplehost {

/// Counts of the rows that were passed to one database client.
struct RowTraffic {
  std::atomic<std::int64_t> handedIn{0};     ///< rows to be stored
  std::atomic<std::int64_t> deletedById{0};  ///< rows that the server has accepted
};

/// A database client that counts the rows that it stores and deletes.
template <typename DatabaseClient>
class CountingDatabaseClient : public DatabaseClient {
 public:
  using Table = log::analytics::CipDatabaseClientInterface::Table;

  /// `traffic` must outlive the client.
  template <typename... Arguments>
  explicit CountingDatabaseClient(RowTraffic& traffic, const Arguments&... arguments)
      : DatabaseClient(arguments...), traffic_(traffic) {}

  using DatabaseClient::insertMultiple;
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) override {
    traffic_.handedIn += static_cast<std::int64_t>(rows.size());
    DatabaseClient::insertMultiple(rows);
  }

  void deleteByIds(Table table, std::vector<int>& ids) override {
    traffic_.deletedById += static_cast<std::int64_t>(ids.size());
    DatabaseClient::deleteByIds(table, ids);
  }

 private:
  RowTraffic& traffic_;
};

}  // namespace qel::samplehost
