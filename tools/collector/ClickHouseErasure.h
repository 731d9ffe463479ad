#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "tools/collector/ClickHouseConnection.h"
#include "tools/collector/ClickHouseSchema.h"

namespace qel::collector {

/// Deletes what an installation or a user has sent. All operations throw `StoreError`.
class ClickHouseErasure {
 public:
  /// What `user` has sent, unless an installation is named.
  ClickHouseErasure(const ClickHouseAccess& access, const std::string& installation,
                    const std::string& user);

  /// The number of rows in `events`, `environments` and `refused`.
  std::array<std::int64_t, 3> count();

  /// Returns when no question finds the rows any more. ClickHouse removes the old files minutes
  /// later.
  void run();

 private:
  std::int64_t count(std::size_t table, const std::string& more);
  void waitUntil(const std::function<bool()>& isDone, ClickHouseConnection::Deadline deadline);
  void remove(const ClickHouseTable& table, const std::string& condition,
              ClickHouseConnection::Deadline deadline);

  ClickHouseConnection connection_;
  std::array<std::string, 3> conditions_;
};

}  // namespace qel::collector
