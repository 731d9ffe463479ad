#pragma once

#include <memory>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "host/QelUtilities/PathText.h"

namespace qel::test {

/// A connection of another program to a database of the product.
class OtherConnection {
 public:
  explicit OtherConnection(const std::filesystem::path& file) {
    sqlite3* database = nullptr;
    sqlite3_open(utilities::utf8FromPath(file).c_str(), &database);
    database_.reset(database);
  }

  /// False when it fails, or another connection has a lock.
  bool execute(const std::string& statements) const {
    sqlite3_busy_timeout(database_.get(), 0);
    return sqlite3_exec(database_.get(), statements.c_str(), nullptr, nullptr, nullptr) ==
           SQLITE_OK;
  }

  /// The first column of the first row, 0 without one or without the table. Waits for locks,
  /// because Wine releases those of a killed program a moment after its end.
  double number(const std::string& statement) const {
    double number = 0;
    const auto read = [](void* result, int, char** columns, char**) {
      *static_cast<double*>(result) = columns[0] == nullptr ? 0 : std::stod(columns[0]);
      return 0;
    };
    sqlite3_busy_timeout(database_.get(), 10'000);
    const int result = sqlite3_exec(database_.get(), statement.c_str(), read, &number, nullptr);
    EXPECT_NE(result, SQLITE_BUSY) << statement;
    return number;
  }

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
};

}  // namespace qel::test
