#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qel::tools {

/// The members of a stored row that identify it. The collector's store has a column for each.
inline constexpr std::array<std::string_view, 6> columnMembers{
    "SessionId", "InstallationId", "Timestamp", "Category", "Subcategory", "Event"};

/// One value for each column member; empty if the row has no such member or its value is not a
/// string.
using Columns = std::array<std::optional<std::string>, columnMembers.size()>;

/// The maximum depth of nested objects and arrays in a row. The row itself counts as one.
inline constexpr std::size_t deepestNesting = 64;

enum class RowVerdict { Sound, NoJsonObject, NestedTooDeeply };

struct RowReading {
  RowVerdict verdict = RowVerdict::NoJsonObject;
  Columns columns;  ///< empty unless the verdict is `Sound`
};

/// Checks that `text` is one JSON object (strict grammar, valid UTF-8) and reads its columns. If a
/// member occurs several times, its first string value is used. Stack usage does not grow with the
/// nesting depth.
RowReading readRow(std::string_view text);

}  // namespace qel::tools
