#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/support/MemoryStorage.h"

namespace qel::test {

/// An item that is told from all others by its number.
class Numbered : public json::ToJsonInterface {
 public:
  explicit Numbered(int number) : number_(number) {}
  std::string toJson() const override { return std::to_string(number_); }

 private:
  const int number_;
};

/// A client over real databases, active from construction to destruction. What is queued at its end
/// is lost unless `databases` are joined before.
class Session {
 public:
  explicit Session(const std::string& directory,
                   std::optional<std::chrono::seconds> retention = std::nullopt)
      : databases(*new log::analytics::CipDatabases(
            std::make_unique<log::analytics::CipDatabaseClient>(),
            std::make_unique<log::analytics::SupportDatabaseClient>(retention))),
        client(std::unique_ptr<log::analytics::CipDatabases>(&databases)) {
    client.activate({.webUpdateReporter = webUpdateReporter_,
                     .databasePath = directory,
                     .installationId = "installation",
                     .sessionId = Guid::create(),
                     .serverSecret = "secret",
                     .serverUser = "user",
                     .createEnvironmentItem = anEnvironment,
                     .isSendingAllowed = [] { return true; },
                     .databaseCallback = [] { return true; }});
  }

  void insert(int number) const {
    databases.insert(std::make_unique<Numbered>(number),
                     log::analytics::CipDatabaseClientInterface::Items);
  }

 private:
  FakeWebUpdateReporter webUpdateReporter_;

 public:
  log::analytics::CipDatabases& databases;
  log::analytics::Client client;
};

}  // namespace qel::test
