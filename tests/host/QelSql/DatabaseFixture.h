#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include "host/QelLog/LogManager.h"
#include "host/QelSql/SqlDatabaseAdapter.h"

namespace qel::db::sql {

inline std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void write(const std::filesystem::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

/// A directory of its own for each test, and the log of the test.
class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest() {
    std::filesystem::create_directories(directory_);
    log::LogManager::instance().configure({.standardError = false, .file = logFile_});
  }

  ~DatabaseTest() override { std::filesystem::remove_all(directory_); }

  std::string logged() const { return contentOf(logFile_); }

  static void createTable(SqlDatabaseAdapter& database) {
    database.execute("PRAGMA auto_vacuum = INCREMENTAL;");
    const auto result = database.execute(
        "CREATE TABLE IF NOT EXISTS T (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT)");
    ASSERT_TRUE(result.boSuccess()) << result.sErrorMessageGet();
  }

  const std::filesystem::path directory_ =
      std::filesystem::temp_directory_path() /
      (std::string("qel-sql-") + testing::UnitTest::GetInstance()->current_test_info()->name() +
       std::to_string(getpid()));
  const std::filesystem::path logFile_ = directory_ / "log.txt";
  const std::filesystem::path file_ = directory_ / "T.db";
};

/// The file as another program has it open.
inline std::shared_ptr<sqlite3> openInOtherProgram(const std::filesystem::path& file) {
  sqlite3* database = nullptr;
  EXPECT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &database));
  return {database, sqlite3_close};
}

inline void execute(const std::shared_ptr<sqlite3>& database, const char* statements) {
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(database.get(), statements, nullptr, nullptr, nullptr));
}

}  // namespace qel::db::sql
