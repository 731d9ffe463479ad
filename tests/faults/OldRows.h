#pragma once

#include <filesystem>
#include <string>

#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "host/QelSql/SqlDatabaseAdapter.h"

namespace qel::test {

/// Makes a support database whose rows retention takes seconds rather than moments to delete.
inline void makeOldRows(const std::string& directory) {
  log::analytics::SupportDatabaseClient({}).initialize(directory);
  db::sql::SqlDatabaseAdapter(std::filesystem::path(directory) / "SupportDatabase.db")
      .execute(
          "INSERT INTO Items(json, timestamp_utc) WITH RECURSIVE n(i) AS "
          "(SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 300000) SELECT i, '2000-01-01' FROM "
          "n");
}

}  // namespace qel::test
