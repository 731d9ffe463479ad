#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/collector/ClickHouseConnection.h"

namespace qel::collector {

/// A table of a store.
struct ClickHouseTable {
  using Columns = std::vector<std::pair<std::string, std::string>>;  ///< names and types

  std::string name;
  Columns columns;   ///< that are inserted
  Columns computed;  ///< by ClickHouse
  std::string engine = "ReplacingMergeTree";
  std::string order = "key";
};

/// The bytes of a key that are stored.
inline constexpr std::size_t clickHouseKeySize = 24;

/// The tables `events`, `environments` and `refused`, with their columns in the order of
/// `ClickHouseRows`. deploy/clickhouse/single.sql says what they mean.
const std::vector<ClickHouseTable>& clickHouseTables();

/// The table that ClickHouse fills from `events`.
const ClickHouseTable& sessionDays();

/// The statement after which the rows of `ClickHouseRows` follow.
std::string insertionInto(const ClickHouseTable& table);

/// Creates the database and those of its tables that are missing. Throws `StoreError`.
void createSchema(ClickHouseConnection& connection, ClickHouseConnection::Deadline deadline);

/// Throws `StoreError` if a table, view or column is missing, differs, or has a newer version.
void checkSchema(ClickHouseConnection& connection, ClickHouseConnection::Deadline deadline);

/// Writes the version again, which shows whether the store takes rows. Throws `StoreError`.
void rewriteVersion(ClickHouseConnection& connection, ClickHouseConnection::Deadline deadline);

/// Whether the server still deletes rows of tables whose names match a pattern. Throws
/// `StoreError`.
bool isDeletingFrom(ClickHouseConnection& connection, const std::string& pattern,
                    ClickHouseConnection::Deadline deadline);

/// A statement that deletes rows from a table, also from all parts of a distributed one. Its
/// condition is to be appended. Throws `StoreError`.
std::string deletionFrom(ClickHouseConnection& connection, const std::string& table,
                         ClickHouseConnection::Deadline deadline);

}  // namespace qel::collector
