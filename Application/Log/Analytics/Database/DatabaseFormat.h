#pragma once

#include <cstdint>
#include <string>

/// Names and limits of the client's databases, as `docs/data-format.md` describes them. Programs
/// that read the databases also include this header.
namespace qel::log::analytics::format {

/// The database files.
/// @{
inline constexpr const char* sendingDatabase = "ItemDatabase.db";
inline constexpr const char* supportDatabase = "SupportDatabase.db";
/// @}
/// The tables of each file.
/// @{
inline constexpr const char* itemsTable = "Items";
inline constexpr const char* environmentsTable = "Environments";
/// @}
/// The size limit in bytes. A sending database of this size or more accepts no batch.
inline constexpr std::uint64_t sendingDatabaseLimit = 30'720'000;

/// The string that every record of the session contains.
inline std::string sessionMark(const std::string& sessionId) {
  return R"("SessionId": ")" + sessionId + '"';
}

}  // namespace qel::log::analytics::format
