#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "tools/collector/Sha256.h"
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

/// The key that identifies a text, from the text's digest. It begins with eight bytes of the
/// session's digest, so the keys of a session are neighbours. Without a session it is the digest.
Sha256 keyOf(std::optional<std::string_view> session, const Sha256& digest);

/// The keys that a session's texts can have.
struct KeyRange {
  Sha256 first;
  Sha256 last;
};
KeyRange keysOf(std::string_view session);

inline std::string_view bytesOf(const Sha256& key) {
  return {reinterpret_cast<const char*>(key.data()), key.size()};
}

/// Makes an empty file a store, and upgrades a store of an older version in one transaction. Throws
/// `StoreError` and leaves the file as it is if it is neither, or a store of a newer version.
void prepareSchema(SqliteConnection& connection);

/// Throws `StoreError` unless the file is a store of the current version.
void requireCurrentVersion(SqliteConnection& connection);

/// Writes the version again: a transaction that shows whether the store can be written.
void rewriteVersion(SqliteConnection& connection);

}  // namespace qel::collector
