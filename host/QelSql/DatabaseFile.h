#pragma once

#include <chrono>
#include <filesystem>

namespace qel::db::sql {

/// Creates the file, empty and readable and writable for its owner alone, unless it exists. SQLite
/// gives journals the mode of their database. Throws `qel::exception` with the reason.
void createForOwnerAlone(const std::filesystem::path& file);

/// Renames a corrupt database file, which must be closed, and its companions to a name with the
/// time in UTC, such as "ItemDatabase.db.corrupt-20261121T093005Z", that no file bears yet. Returns
/// the new path. Throws `qel::exception` with the reason when the file cannot be renamed.
std::filesystem::path setAside(const std::filesystem::path& file,
                               std::chrono::system_clock::time_point now);

}  // namespace qel::db::sql
