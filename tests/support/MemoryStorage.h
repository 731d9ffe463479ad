#pragma once

#include <algorithm>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "tests/support/MemoryDatabaseClient.h"
#include "tests/support/StoredEvent.h"

namespace qel::test {

struct NoWebUpdates : reports::WebUpdateReporterInterface {
  bool isInformationAvailable() const override { return false; }
  void reset() override {}
  std::uint64_t getSuccessCount() const override { return 0; }
  std::uint64_t getCorruptPackageCount() const override { return 0; }
};

inline std::unique_ptr<items::EnvironmentItem> anEnvironment() {
  return std::make_unique<items::EnvironmentItem>(
      items::details::OsEnvironmentInfo("os", "64", "en", "1", false, "", 96, ""),
      items::details::HardwareEnvironmentInfo(), std::vector<items::details::QelEnvironmentInfo>(),
      false);
}

/// A valid parameter for a client or a database pair, and the reporter that it refers to.
struct Activation {
  const std::string directory = {};
  NoWebUpdates webUpdateReporter = {};
  parameters::ActivateParameter parameter{
      .webUpdateReporter = webUpdateReporter,
      .databasePath = directory,
      .installationId = "installation",
      .sessionId = Guid::parse("00112233-4455-6677-8899-AABBCCDDEEFF"),
      .serverSecret = "secret",
      .serverUser = "user",
      .createEnvironmentItem = anEnvironment,
      .isSendingAllowed = [] { return true; },
      .databaseCallback = [] { return true; }};
};

/// A database pair whose databases stay in memory, and the parameter to activate it with.
struct MemoryStorage : Activation {
  /// Initializes the pair and returns it.
  CipDatabases& initialized() const {
    databases->initialize(parameter);
    return *databases;
  }

  /// The events in the support database, each in one line, after all queued rows are written.
  std::vector<std::string> recorded() const {
    databases->join();
    auto events = support->texts(MemoryDatabaseClient::Items);
    std::ranges::transform(events, events.begin(), summaryOf);
    return events;
  }

  MemoryDatabaseClient* sending = new MemoryDatabaseClient;
  MemoryDatabaseClient* support = new MemoryDatabaseClient;
  /// Owns the two above. A test may move it to a client.
  std::unique_ptr<CipDatabases> owned =
      std::make_unique<CipDatabases>(std::unique_ptr<MemoryDatabaseClient>(sending),
                                     std::unique_ptr<MemoryDatabaseClient>(support));
  CipDatabases* databases = owned.get();
};

}  // namespace qel::test
