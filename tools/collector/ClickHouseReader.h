#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/collector/ClickHouseConnection.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// Answers questions about a store in ClickHouse. The answers are those of an SQLite file with the
/// same rows, also before ClickHouse has merged rows that were sent twice.
class ClickHouseReader : public StoreReader {
 public:
  explicit ClickHouseReader(ClickHouseAccess access) : connection_(std::move(access)) {}

  ResultTable read(std::string_view figure, const Filter& filter,
                   std::chrono::steady_clock::time_point deadline) override;
  StoredSession session(const std::string& id,
                        std::chrono::steady_clock::time_point deadline) override;
  std::vector<std::string> sessionsBeginningWith(
      const std::string& beginning, std::size_t limit,
      std::chrono::steady_clock::time_point deadline) override;
  void interrupt() override { connection_.interrupt(); }

 private:
  std::vector<std::vector<Cell>> ask(const std::string& question,
                                     std::chrono::steady_clock::time_point deadline);

  ClickHouseConnection connection_;
};

}  // namespace qel::collector
