#pragma once

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/support/MemoryStorage.h"

namespace qel::test {

/// An item whose text is its number.
struct Numbered : json::ToJsonInterface {
  explicit Numbered(int ofItem) : number(ofItem) {}
  std::string toJson() const override { return std::to_string(number); }

  const int number;
};

/// A pair over database files. The support database has no age limit without one here.
inline std::unique_ptr<log::analytics::CipDatabases> filePair(
    std::optional<std::chrono::seconds> retention = std::nullopt) {
  return std::make_unique<log::analytics::CipDatabases>(
      std::make_unique<log::analytics::CipDatabaseClient>(),
      std::make_unique<log::analytics::SupportDatabaseClient>(retention));
}

/// A client over database files, active from construction to destruction. Rows that are still
/// queued at its end are lost; `databases.join()` writes them.
class Session {
 public:
  explicit Session(const std::string& directory,
                   std::optional<std::chrono::seconds> retention = std::nullopt)
      : activation_{directory},
        databases(*filePair(retention).release()),
        client(std::unique_ptr<log::analytics::CipDatabases>(&databases)) {
    activation_.parameter.createEnvironmentItem = anEnvironment;
    client.activate(activation_.parameter);
  }

  void insert(int number) const {
    databases.insert(std::make_unique<Numbered>(number),
                     log::analytics::CipDatabaseClientInterface::Items);
  }

 private:
  Activation activation_;

 public:
  log::analytics::CipDatabases& databases;
  log::analytics::Client client;
};

}  // namespace qel::test
