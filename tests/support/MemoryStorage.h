#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "tests/support/MemoryDatabaseClient.h"
#include "tests/support/StoredEvent.h"

namespace qel::test {

/// A web-update reporter that notes what is asked of it.
class FakeWebUpdateReporter : public log::analytics::reports::WebUpdateReporterInterface {
 public:
  bool isInformationAvailable() const override { return counts.has_value(); }
  void reset() override {
    ++resets;
    counts.reset();
  }
  std::uint64_t getSuccessCount() const override { return counts.value().first; }
  std::uint64_t getCorruptPackageCount() const override { return counts.value().second; }

  std::optional<std::pair<std::uint64_t, std::uint64_t>> counts;
  int resets = 0;
};

inline std::unique_ptr<log::analytics::items::EnvironmentItem> anEnvironment() {
  using namespace log::analytics::items;
  return std::make_unique<EnvironmentItem>(
      details::OsEnvironmentInfo("os", "64", "en", "1", false, "", 96, ""),
      details::HardwareEnvironmentInfo(), std::vector<details::QelEnvironmentInfo>(), false);
}

/// A database pair whose databases stay in memory, and the parameter to activate it with.
class MemoryStorage {
 public:
  /// Initializes the pair and returns it.
  log::analytics::CipDatabases& initialized() const {
    databases->initialize(parameter);
    return *databases;
  }

  /// The events in the support database, each in one line, once all that was inserted is there.
  std::vector<std::string> recorded() const {
    databases->join();
    auto events = support->texts(MemoryDatabaseClient::Items);
    std::ranges::transform(events, events.begin(), summaryOf);
    return events;
  }

  FakeWebUpdateReporter webUpdateReporter;
  log::analytics::parameters::ActivateParameter parameter{
      .webUpdateReporter = webUpdateReporter,
      .databasePath = "directory",
      .installationId = "installation",
      .sessionId = Guid::parse("00112233-4455-6677-8899-AABBCCDDEEFF"),
      .serverSecret = {},
      .serverUser = {},
      .createEnvironmentItem = {},
      .isSendingAllowed = [] { return true; },
      .databaseCallback = [] { return true; }};

  MemoryDatabaseClient* sending = new MemoryDatabaseClient;
  MemoryDatabaseClient* support = new MemoryDatabaseClient;
  /// May be moved on, to a client. Owns the two above.
  std::unique_ptr<log::analytics::CipDatabases> owned =
      std::make_unique<log::analytics::CipDatabases>(
          std::unique_ptr<MemoryDatabaseClient>(sending),
          std::unique_ptr<MemoryDatabaseClient>(support));
  log::analytics::CipDatabases* databases = owned.get();
};

}  // namespace qel::test
