#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::collector {

/// A package, split by its brackets and strings alone. The client joins stored texts with commas
/// without parsing them, so the splitter accepts invalid rows.
struct SplitPackage {
  std::string frame;  ///< the package with its lists emptied: `{"version": "3.1", "events": []}`
  /// The rows of each list of the package, in order, without blanks around them and without empty
  /// rows. They refer to the body.
  std::vector<std::vector<std::string_view>> lists;
};

/// Nothing if brackets or strings do not close, or if the lists have more than `mostRows` rows.
std::optional<SplitPackage> splitPackage(std::string_view body, std::size_t mostRows);

}  // namespace qel::collector
