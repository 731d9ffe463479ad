#pragma once

#include <cstddef>

/// Limits and texts of the packages that a client uploads, as `docs/data-format.md` describes them.
/// Programs that receive packages take them from here.
namespace qel::log::analytics::format {

/// The row that reaches so many bytes of row text closes a package.
inline constexpr std::size_t packageSizeLimit = 1'000'000;

/// The version that every package names.
inline constexpr const char* packageVersion = "3.1";

/// Where and as what packages are posted.
/// @{
inline constexpr const char* uploadPath = "/authenticated/customer-care.php";
inline constexpr const char* uploadContentType = "application/json; charset=utf-8";
/// @}

}  // namespace qel::log::analytics::format
