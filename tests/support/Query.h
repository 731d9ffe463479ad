#pragma once

#include <filesystem>

#include <gtest/gtest.h>

#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/Patience.h"

namespace qel::test {

/// Runs a statement on a database file over a connection of its own and returns the rows, the
/// columns of each joined by `|`.
inline std::vector<std::string> query(const std::filesystem::path& file,
                                      const std::string& statement) {
  const utilities::Patience patience(utilities::Patience::unlimited);
  const auto result = db::sql::SqlDatabaseAdapter(file).execute(statement);
  EXPECT_TRUE(result.boSuccess()) << result.sErrorMessageGet();
  std::vector<std::string> rows;
  for (const auto& columns : result.result()) {
    std::string& row = rows.emplace_back(columns.front());
    for (std::size_t column = 1; column < columns.size(); ++column) {
      row += '|' + columns[column];
    }
  }
  return rows;
}

}  // namespace qel::test
