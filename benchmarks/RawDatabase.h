#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

struct sqlite3;

namespace qel::benchmarks {

/// A database file of the client's, used through nothing but SQLite's C interface: the same
/// statements under the same settings. What fails ends the program.
class RawDatabase {
 public:
  using Table = log::analytics::CipDatabaseClientInterface::Table;
  using RowMap = log::analytics::CipDatabaseClientInterface::RowMap;

  /// The names of the files in a client's directory.
  static constexpr const char* sending = "ItemDatabase.db";
  static constexpr const char* support = "SupportDatabase.db";

  /// Opens or creates the file. A new one has the tables of that name's.
  RawDatabase(const std::filesystem::path& directory, const std::string& name);

  /// Runs the statement to its end; rows that it yields are discarded.
  void run(const std::string& statement);
  /// Runs the statements in one transaction.
  void runTogether(const std::vector<std::string>& statements);
  RowMap rows(const std::string& table);

 private:
  struct Close {
    void operator()(sqlite3* database) const;
  };
  std::unique_ptr<sqlite3, Close> database_;
};

/// The statements that insert the rows of so many typical items.
std::vector<std::string> insertStatements(int count);

/// The statements that delete the first so many items of a database in batches of 3,300, which is
/// what a package holds.
std::vector<std::string> deleteStatements(int count);
/// The ids that they delete.
std::vector<std::vector<int>> deletedIds(int count);

/// Makes a sending database of so many typical items, written to the disk.
void makeDatabase(const std::filesystem::path& directory, int rows);

/// Copies the sending database that `makeDatabase` made once for that many rows, and has the copy
/// written to the disk, so that its first user does not pay for that.
void copyDatabase(int rows, const std::filesystem::path& directory);

}  // namespace qel::benchmarks
