#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::collector {

/// A package that was split by looking only at its brackets, commas and strings. The splitter
/// accepts invalid rows, because the client joins stored rows without parsing them.
struct SplitPackage {
  std::string frame;  ///< the package with its lists emptied: `{"version": "3.1", "events": []}`
  /// The rows of each list of the package, in order, without surrounding whitespace and without
  /// empty rows. They are views into `body`.
  std::vector<std::vector<std::string_view>> lists;
};

/// Returns `std::nullopt` if brackets or strings are not closed, or if the lists together have more
/// than `mostRows` rows.
std::optional<SplitPackage> splitPackage(std::string_view body, std::size_t mostRows);

}  // namespace qel::collector
