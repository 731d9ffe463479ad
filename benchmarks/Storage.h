#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "benchmarks/RawDatabase.h"
#include "benchmarks/Workload.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {

/// A sending database that takes rows whatever its size.
class UncappedDatabaseClient : public log::analytics::CipDatabaseClient {
 public:
  std::optional<std::uint64_t> getDatabaseFileSize() override { return 0; }
};

class NoWebUpdates : public log::analytics::reports::WebUpdateReporterInterface {
 public:
  bool isInformationAvailable() const override { return false; }
  void reset() override {}
  std::uint64_t getSuccessCount() const override { return 0; }
  std::uint64_t getCorruptPackageCount() const override { return 0; }
};

/// What a client is activated with that may store but does not send by itself.
inline log::analytics::parameters::ActivateParameter activation(NoWebUpdates& webUpdates,
                                                                const std::string& directory,
                                                                bool mayStoreForSending) {
  return {.webUpdateReporter = webUpdates,
          .databasePath = directory,
          .installationId = "QEL-20417",
          .sessionId = qel::Guid::create(),
          .serverSecret = {},
          .serverUser = {},
          .createEnvironmentItem = {},
          .isSendingAllowed = [mayStoreForSending] { return mayStoreForSending; },
          .databaseCallback = [] { return true; }};
}

/// The database pair in a new directory, initialized.
class Storage {
 public:
  Storage() {
    NoWebUpdates webUpdates;
    databases_.initialize(activation(webUpdates, directory_.text(), true));
  }

  /// Inserts the texts as items that are rendered already, and waits until they are stored.
  void store(const std::vector<std::string>& texts) {
    for (const auto& text : texts) {
      databases_.insert(std::make_unique<Rendered>(text),
                        log::analytics::CipDatabaseClientInterface::Items);
    }
    databases_.join();
  }

  /// Begins the worker's period, so that it does not end within a batch.
  void beginPeriod() { databases_.join(); }

  /// In the database that has fewer.
  std::size_t rowsStored() const {
    return std::min(RawDatabase(directory_.path(), RawDatabase::sending).rows("Items").size(),
                    RawDatabase(directory_.path(), RawDatabase::support).rows("Items").size());
  }

 private:
  class Rendered : public json::ToJsonInterface {
   public:
    explicit Rendered(const std::string& text) : text_(text) {}
    std::string toJson() const override { return text_; }

   private:
    const std::string& text_;
  };

  const test::TemporaryDirectory directory_;
  log::analytics::CipDatabases databases_{
      std::make_unique<UncappedDatabaseClient>(),
      std::make_unique<log::analytics::SupportDatabaseClient>(std::nullopt)};
};

/// As many rendered rows as one batch of the worker's may have.
inline std::vector<std::string> renderedBatch() {
  identifyProcess();
  constexpr int count = 10'000;
  std::vector<std::string> texts;
  texts.reserve(count);
  for (int number = 0; number < count; ++number) {
    texts.push_back(makeItem(number)->toJson());
  }
  return texts;
}

}  // namespace qel::benchmarks
