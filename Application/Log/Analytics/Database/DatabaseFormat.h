#pragma once

#include <cstdint>
#include <string>

/// Names, limits and texts of the client's databases and packages, as `docs/data-format.md`
/// describes them. Programs that read what a client has recorded, or receive it, take them from
/// here.
namespace qel::log::analytics::format {

/// The database files.
/// @{
inline constexpr const char* sendingDatabase = "ItemDatabase.db";
inline constexpr const char* supportDatabase = "SupportDatabase.db";
/// @}
/// The tables of each.
/// @{
inline constexpr const char* itemsTable = "Items";
inline constexpr const char* environmentsTable = "Environments";
/// @}
/// From this size on, in bytes, the sending database takes no batch.
inline constexpr std::uint64_t sendingDatabaseLimit = 30'720'000;

/// What the text of each of a session's records holds.
inline std::string sessionMark(const std::string& sessionId) {
  return R"("SessionId": ")" + sessionId + '"';
}

}  // namespace qel::log::analytics::format
