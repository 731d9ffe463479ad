#pragma once

#include <set>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Query.h"

namespace qel::test {

constexpr auto Items = CipDatabaseClientInterface::Items;

/// An item whose text is its number.
struct Numbered : json::ToJsonInterface {
  explicit Numbered(int ofItem) : number(ofItem) {}
  std::string toJson() const override { return std::to_string(number); }

  const int number;
};

/// The texts of a database file except objects. The file must be sound.
inline std::multiset<std::string> textsIn(const std::filesystem::path& file) {
  EXPECT_EQ(query(file, "PRAGMA integrity_check")[0], "ok");
  const auto rows = query(file, "SELECT json FROM Items WHERE json NOT LIKE '{%'");
  return {rows.begin(), rows.end()};
}

/// A pair over database files. The support database has no age limit without one here.
inline std::unique_ptr<CipDatabases> filePair(
    std::optional<std::chrono::seconds> retention = std::nullopt) {
  return std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                        std::make_unique<SupportDatabaseClient>(retention));
}

/// Rows of a support database that are so many that retention deletes them for seconds.
inline constexpr const char* insertionOfOldRows =
    "INSERT INTO Items(json, timestamp_utc) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
    "SELECT i + 1 FROM n WHERE i < 300000) SELECT i, '2010-01-01' FROM n";

/// A client over database files, active from construction to destruction. Rows that are still
/// queued at its end are lost; `databases.join()` writes them.
struct Session {
  explicit Session(const std::string& directory,
                   std::optional<std::chrono::seconds> retention = std::nullopt)
      : activation{directory},
        databases(*filePair(retention).release()),
        client(std::unique_ptr<CipDatabases>(&databases)) {
    client.activate(activation.parameter);
  }

  void insert(int number) const { databases.insert(std::make_unique<Numbered>(number), Items); }

  Activation activation;
  CipDatabases& databases;
  Client client;
};

}  // namespace qel::test
