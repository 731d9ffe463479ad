#pragma once

#include <memory>

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
    return sqlite3_exec(database_.get(), statements.c_str(), nullptr, nullptr, nullptr) ==
           SQLITE_OK;
  }

  /// The first column of the first row, 0 without one.
  double number(const std::string& statement) const {
    double number = 0;
    const auto read = [](void* result, int, char** columns, char**) {
      *static_cast<double*>(result) = columns[0] == nullptr ? 0 : std::stod(columns[0]);
      return 0;
    };
    sqlite3_exec(database_.get(), statement.c_str(), read, &number, nullptr);
    return number;
  }

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
};

}  // namespace qel::test
