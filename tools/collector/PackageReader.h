#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "tools/common/RowReader.h"

namespace qel::collector {

/// A text to store as a row, once however often the package has it.
struct Row {
  std::string_view text;  ///< as it was sent, byte for byte
  std::size_t count = 1;  ///< how often the package has it
  tools::Columns columns;
};

/// A text that cannot be read. It is stored separately.
struct RefusedText {
  std::string_view text;
  std::size_t count = 1;
  std::string_view reason;
};

/// The content of a request. All texts refer to its body.
struct Package {
  std::vector<Row> environments;
  std::vector<Row> events;
  std::vector<RefusedText> refused;
};

/// The largest number of rows in a package.
inline constexpr std::size_t mostRows = 100'000;

/// Reads a request's body: `{"version": "3.1", "environments": [...], "events": [...]}`. Either
/// list may be absent. A row that is no JSON object is refused alone if its brackets and quotation
/// marks close. Otherwise, or if the rest is no package, the whole body is one refused text.
/// Nothing of the body is lost. Throws nothing except `std::bad_alloc`.
Package readPackage(std::string_view body);

}  // namespace qel::collector
