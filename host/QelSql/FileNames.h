#pragma once

#include <array>

/// Names of the files that this library makes next to a database file.
namespace qel::db::sql {

/// What SQLite appends to a database's name for its companions.
/// @{
inline constexpr const char* journalSuffix = "-journal";
inline constexpr const char* walSuffix = "-wal";
inline constexpr const char* sharedMemorySuffix = "-shm";
inline constexpr std::array companionSuffixes{journalSuffix, walSuffix, sharedMemorySuffix};
/// @}

/// Follows the name of a corrupt database that was set aside. The time in UTC comes after it.
inline constexpr const char* setAsideMark = ".corrupt-";

/// The file in a directory with databases that the process which uses them locks.
inline constexpr const char* lockFileName = "Databases.lock";

}  // namespace qel::db::sql
