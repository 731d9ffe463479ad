#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "tools/collector/ClickHouseAccess.h"

namespace qel::collector {

/// A connection to ClickHouse's HTTP interface, which is kept open between operations. Credentials
/// are sent in headers, because ClickHouse and proxies log URLs. All operations throw `StoreError`,
/// whose message names the server and has ClickHouse's own reason. Used by one thread at a time.
class ClickHouseConnection {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  explicit ClickHouseConnection(ClickHouseAccess access);
  ClickHouseConnection(const ClickHouseConnection&) = delete;
  ClickHouseConnection& operator=(const ClickHouseConnection&) = delete;
  ~ClickHouseConnection();

  const ClickHouseAccess& access() const { return access_; }

  /// Runs a statement and returns its whole result.
  std::string run(const std::string& statement, Deadline deadline);

  /// The same outside the database, which may not exist.
  std::string runOutside(const std::string& statement, Deadline deadline);

  /// Runs `INSERT INTO ... FORMAT ...` with rows in this format. Returns when ClickHouse has
  /// confirmed all rows. After an exception, any number of them may be stored.
  void insert(const std::string& statement, std::string_view rows, Deadline deadline);

  /// Makes the exchange in progress, and later ones, fail within a second. Thread-safe.
  void interrupt() { isInterrupted_ = true; }

  [[noreturn]] void fail(const std::string& reason) const;

 private:
  class Transfer;

  std::string result(const std::string& parameters, const std::string& statement,
                     Deadline deadline);
  /// The text of the answer, whatever its status.
  std::string exchange(const std::string& parameters, std::string_view body, Deadline deadline);

  const ClickHouseAccess access_;
  std::atomic<bool> isInterrupted_ = false;
  const std::unique_ptr<Transfer> transfer_;
};

}  // namespace qel::collector
