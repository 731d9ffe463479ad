#pragma once

#include <array>

#include "tools/collector/SqliteConnection.h"

namespace qel::collector {

/// The tables of a store: name, and the columns that only this table has.
struct SqliteTable {
  const char* name;
  const char* columns;
};

inline constexpr std::array<SqliteTable, 3> sqliteTables{{
    {"events", "session, installation, time, category, subcategory, event"},
    {"environments", "session, installation, time"},
    {"refused", "reason"},
}};

/// Makes an empty file a store, and upgrades a store of an older version in one transaction. Throws
/// `StoreError` and leaves the file as it is if it is neither, or a store of a newer version.
void prepareSchema(SqliteConnection& connection);

/// Throws `StoreError` unless the file is a store of the current version.
void requireCurrentVersion(SqliteConnection& connection);

/// Writes the version again: a transaction that shows whether the store can be written.
void rewriteVersion(SqliteConnection& connection);

}  // namespace qel::collector
