#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {

/// Parameter of a client that may store rows for support.
/// With `isSendingAllowed` it may also store rows for sending, and starts sending when activated.
log::analytics::parameters::ActivateParameter activation(const std::string& directory,
                                                         bool isSendingAllowed);

/// A database pair in a new directory, initialized.
class Storage {
 public:
  Storage();

  /// Inserts rendered items and waits until they are stored. The texts outlive the call.
  void store(const std::vector<std::string>& texts);

  /// Starts the worker's period, so that it does not end within a batch.
  void beginPeriod() { databases_.join(); }

  /// The smaller number of rows of the two databases.
  std::size_t rowsStored() const;

 private:
  /// A sending database that takes rows whatever its size.
  class UncappedDatabaseClient : public log::analytics::CipDatabaseClient {
   public:
    std::optional<std::uint64_t> getDatabaseFileSize() override { return 0; }
  };

  const test::TemporaryDirectory directory_;
  log::analytics::CipDatabases databases_{
      std::make_unique<UncappedDatabaseClient>(),
      std::make_unique<log::analytics::SupportDatabaseClient>(std::nullopt)};
};

/// The number of rows of the worker's largest batch.
constexpr int rowsOfBatch = 10'000;

/// Rendered items that fill one batch.
std::vector<std::string> renderedBatch();

}  // namespace qel::benchmarks
