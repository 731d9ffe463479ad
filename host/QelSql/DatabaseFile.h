#pragma once

#include <chrono>
#include <filesystem>

namespace qel::db::sql {

/// Whether SQLite gives a new journal the access rights of its database. On Windows, a journal
/// inherits the rights of the directory instead.
#ifdef _WIN32
inline constexpr bool journalHasRightsOfDatabase = false;
#else
inline constexpr bool journalHasRightsOfDatabase = true;
#endif

/// Sets a corrupt database file aside. Renames the file and its companions (`companionSuffixes`) to
/// an unused name with the time in UTC, such as "ItemDatabase.db.corrupt-20261121T093005Z". Deletes
/// an empty companion. The file must be closed. Returns the new path. Throws `qel::exception` with
/// the reason if the file cannot be renamed.
std::filesystem::path setAside(const std::filesystem::path& file,
                               std::chrono::system_clock::time_point now);

}  // namespace qel::db::sql
