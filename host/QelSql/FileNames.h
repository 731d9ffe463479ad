#pragma once

#include <array>

/// Names of the files that this library creates next to a database file.
namespace qel::db::sql {

/// The suffixes that SQLite appends to a database's name for the database's companion files.
/// @{
inline constexpr const char* journalSuffix = "-journal";
inline constexpr const char* walSuffix = "-wal";
inline constexpr const char* sharedMemorySuffix = "-shm";
inline constexpr std::array companionSuffixes{journalSuffix, walSuffix, sharedMemorySuffix};
/// @}

/// Follows the name of a corrupt database that was set aside (renamed). The time in UTC follows
/// this mark.
inline constexpr const char* setAsideMark = ".corrupt-";

/// The lock file in a directory with databases. The process that uses the databases locks this
/// file.
inline constexpr const char* lockFileName = "Databases.lock";

}  // namespace qel::db::sql
