#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qel::tools {

/// The members of a stored row that tell what it is; the collector's store has a column for each.
inline constexpr std::array<std::string_view, 6> columnMembers{
    "SessionId", "InstallationId", "Timestamp", "Category", "Subcategory", "Event"};

/// One value per column member; nothing where the row has no such member or it is no text.
using Columns = std::array<std::optional<std::string>, columnMembers.size()>;

/// Deepest nesting of objects and arrays that a row may have, itself counted.
inline constexpr std::size_t deepestNesting = 64;

enum class RowVerdict { Sound, NoJsonObject, NestedTooDeeply };

struct RowReading {
  RowVerdict verdict = RowVerdict::NoJsonObject;
  Columns columns;  ///< empty unless the row is sound
};

/// Checks that `text` is one JSON object (strict grammar, valid UTF-8) and reads its columns. Of a
/// member that comes twice the first text counts. Takes no more stack for deep nesting.
RowReading readRow(std::string_view text);

}  // namespace qel::tools
