#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace qel::log::analytics::items {

/// The text of an enumerator from a table indexed by the enumerators' values. A value that the
/// enumeration does not name has `fallback` as its text; where that is empty, the item is rendered
/// without the member.
template <std::size_t count, typename Enumeration>
std::string textOf(const std::array<std::string_view, count>& texts, Enumeration value,
                   std::string_view fallback) {
  static_assert(std::is_unsigned_v<std::underlying_type_t<Enumeration>>);
  const auto index = static_cast<std::size_t>(value);
  return std::string(index < count ? texts[index] : fallback);
}

}  // namespace qel::log::analytics::items
