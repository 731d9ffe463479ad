#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "tools/common/RowReader.h"

namespace qel::collector {

/// A text that is kept as a row, once however often the package holds it.
struct Row {
  std::string_view text;  ///< exactly as it was sent
  std::size_t count = 1;  ///< how often the package holds it
  tools::Columns columns;
};

/// A text that is kept apart because it cannot be read.
struct RefusedText {
  std::string_view text;
  std::size_t count = 1;
  std::string_view reason;
};

/// What one request brought. All texts refer to its body.
struct Package {
  std::vector<Row> environments;
  std::vector<Row> events;
  std::vector<RefusedText> refused;
};

/// Most rows that a package may hold.
inline constexpr std::size_t mostRows = 100'000;

/// Reads a request's body: `{"version": "3.1", "environments": [...], "events": [...]}`, either
/// list optional. A row that is no JSON object is refused alone as long as its brackets and
/// quotation marks close; otherwise, or when the rest is no package, the whole body is one refused
/// text. Nothing that was sent is left out. Throws nothing but `std::bad_alloc`.
Package readPackage(std::string_view body);

}  // namespace qel::collector
