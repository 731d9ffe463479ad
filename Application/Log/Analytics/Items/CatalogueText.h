#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace qel::log::analytics::items {

/// Returns the text of an enumerator from a table that is indexed by the enumerators' values.
/// Returns `fallback` for a value that has no text. A subcategory or an event whose text is empty
/// is not rendered.
template <std::size_t count, typename Enumeration>
std::string textOf(const std::array<std::string_view, count>& texts, Enumeration value,
                   std::string_view fallback) {
  static_assert(std::is_unsigned_v<std::underlying_type_t<Enumeration>>);
  const auto index = static_cast<std::size_t>(value);
  return std::string(index < count ? texts[index] : fallback);
}

}  // namespace qel::log::analytics::items
