#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {

/// An initialized database pair in a new directory.
class Storage {
 public:
  Storage();

  /// Inserts rendered items and waits until they are stored.
  void store(const std::vector<std::string>& texts);

  /// Restarts the worker's period, so that it does not end within a batch.
  void beginPeriod() { databases_.join(); }

  /// The number of rows in the database that has fewer of them.
  std::size_t rowsStored() const;

 private:
  /// A sending database that accepts rows regardless of its size.
  class UncappedDatabaseClient : public log::analytics::CipDatabaseClient {
   public:
    std::optional<std::uint64_t> getDatabaseFileSize() override { return 0; }
  };

  const test::TemporaryDirectory directory_;
  log::analytics::CipDatabases databases_{
      std::make_unique<UncappedDatabaseClient>(),
      std::make_unique<log::analytics::SupportDatabaseClient>(std::nullopt)};
};

/// The maximum number of rows in a batch of the worker.
constexpr int rowsOfBatch = 10'000;

/// Rendered items that fill one batch.
std::vector<std::string> renderedBatch();

}  // namespace qel::benchmarks
