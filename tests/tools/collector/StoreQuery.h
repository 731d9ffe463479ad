#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace qel::collector {

/// Runs SQL on a store's file over a connection of its own and returns the rows, the columns of
/// each joined by `|`, NULL as `-`.
inline std::vector<std::string> query(const std::filesystem::path& file, const std::string& sql) {
  sqlite3* connection = nullptr;
  EXPECT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
  std::vector<std::string> rows;
  const auto addRow = [](void* result, int count, char** values, char** /*names*/) {
    std::string row;
    for (int column = 0; column < count; ++column) {
      row += column == 0 ? "" : "|";
      row += values[column] != nullptr ? values[column] : "-";
    }
    static_cast<std::vector<std::string>*>(result)->push_back(row);
    return 0;
  };
  EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), addRow, &rows, nullptr), SQLITE_OK)
      << sqlite3_errmsg(connection);
  sqlite3_close(connection);
  return rows;
}

}  // namespace qel::collector
