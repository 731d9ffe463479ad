#pragma once

#include <filesystem>
#include <string>

#include <sqlite3.h>

namespace qel::test {

/// A connection as another program has one, to a database that the product works on.
class OtherConnection {
 public:
  explicit OtherConnection(const std::filesystem::path& file) {
    sqlite3_open(file.c_str(), &database_);
  }
  OtherConnection(const OtherConnection&) = delete;
  OtherConnection& operator=(const OtherConnection&) = delete;
  ~OtherConnection() { sqlite3_close(database_); }

  /// False when it cannot be done, or not now.
  bool execute(const std::string& statements) const {
    return sqlite3_exec(database_, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  }

  /// The first column of the first row, 0 without one.
  double number(const std::string& statement) const {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(database_, statement.c_str(), -1, &prepared, nullptr);
    const double number =
        sqlite3_step(prepared) == SQLITE_ROW ? sqlite3_column_double(prepared, 0) : 0;
    sqlite3_finalize(prepared);
    return number;
  }

 private:
  sqlite3* database_ = nullptr;
};

}  // namespace qel::test
