#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace qel::log::analytics::items {

/// Returns the text of an enumerator from a table that is indexed by the values. A value without a
/// name has the text `fallback`. An item is rendered without a member whose text is empty.
template <std::size_t count, typename Enumeration>
std::string textOf(const std::array<std::string_view, count>& texts, Enumeration value,
                   std::string_view fallback) {
  static_assert(std::is_unsigned_v<std::underlying_type_t<Enumeration>>);
  const auto index = static_cast<std::size_t>(value);
  return std::string(index < count ? texts[index] : fallback);
}

}  // namespace qel::log::analytics::items
