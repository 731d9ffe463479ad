#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::collector {

/// A package taken apart by its brackets and strings alone. The client joins stored texts with
/// commas without looking into them, so whether a row is sound is not asked here.
struct SplitPackage {
  std::string frame;  ///< the package with its lists emptied: `{"version": "3.1", "events": []}`
  /// The rows of each list that is a member of the package, in order, without the blanks around
  /// them. An empty row is dropped. They refer to the body.
  std::vector<std::vector<std::string_view>> lists;
};

/// Nothing when brackets or strings do not close, or the lists hold more than `mostRows` rows.
std::optional<SplitPackage> splitPackage(std::string_view body, std::size_t mostRows);

}  // namespace qel::collector
