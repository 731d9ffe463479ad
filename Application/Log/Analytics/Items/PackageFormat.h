#pragma once

#include <cstddef>

/// Limits and strings of the packages that a client uploads, as `docs/data-format.md` describes
/// them. Programs that receive packages also include this header.
namespace qel::log::analytics::format {

/// The size limit in bytes of row text. The row that reaches this limit is the last row of its
/// package.
inline constexpr std::size_t packageSizeLimit = 1'000'000;

/// The version in every package.
inline constexpr const char* packageVersion = "3.1";

/// Path and content type of the request that posts a package.
/// @{
inline constexpr const char* uploadPath = "/authenticated/customer-care.php";
inline constexpr const char* uploadContentType = "application/json; charset=utf-8";
/// @}

}  // namespace qel::log::analytics::format
