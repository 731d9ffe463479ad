#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

struct sqlite3;

namespace qel::benchmarks {

/// A database file of the client, used only through SQLite's C interface, with the client's
/// statements and settings. A failure terminates the program.
class RawDatabase {
 public:
  using Table = log::analytics::CipDatabaseClientInterface::Table;
  using RowMap = log::analytics::CipDatabaseClientInterface::RowMap;

  /// The names of the files in a client's directory.
  static constexpr const char* sending = "ItemDatabase.db";
  static constexpr const char* support = "SupportDatabase.db";

  /// Opens or creates the file. A new file gets the tables that a client creates in a file of this
  /// name.
  RawDatabase(const std::filesystem::path& directory, const std::string& name);

  /// Runs the statement to completion and discards its rows.
  void run(const std::string& statement);
  void runAll(const std::vector<std::string>& statements);
  /// Runs the statements in one transaction.
  void runTogether(const std::vector<std::string>& statements);
  RowMap rows(const std::string& table);

 private:
  struct Close {
    void operator()(sqlite3* database) const;
  };
  std::unique_ptr<sqlite3, Close> database_;
};

/// The statements that insert `count` typical items.
std::vector<std::string> insertStatements(int count);

/// The statements that delete the first `count` items in batches of 3,300, which is the number of
/// rows in a package.
std::vector<std::string> deleteStatements(int count);
/// The IDs that `deleteStatements` deletes, by batch.
std::vector<std::vector<int>> deletedIds(int count);

/// Creates a sending database of typical items and flushes it to disk.
void makeDatabase(const std::filesystem::path& directory, int rows);

/// Copies a database that `makeDatabase` creates only once per number of rows. Flushes the copy to
/// disk, so that its first user does not wait for the flush.
void copyDatabase(int rows, const std::filesystem::path& directory);

}  // namespace qel::benchmarks
