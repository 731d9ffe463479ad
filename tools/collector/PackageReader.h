#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "tools/common/RowReader.h"

namespace qel::collector {

/// A text to store as one row, even if the package contains it several times.
struct Row {
  std::string_view text;  ///< as sent, byte for byte
  std::size_t count = 1;  ///< how often the package contains the text
  tools::Columns columns;
};

/// A text that cannot be parsed. It is stored in a separate table.
struct RefusedText {
  std::string_view text;
  std::size_t count = 1;
  std::string_view reason;
};

/// The content of a request. Each `text` is a view into the request body.
struct Package {
  std::vector<Row> environments;
  std::vector<Row> events;
  std::vector<RefusedText> refused;
};

/// The maximum number of rows in a package.
inline constexpr std::size_t mostRows = 100'000;

/// The memory in bytes that the rows of a body need besides the body, at most. Many short rows need
/// several times the memory of their body.
std::size_t memoryOfRows(std::string_view body);

/// Parses a request body: `{"version": "3.1", "environments": [...], "events": [...]}`. Either list
/// may be absent. A row that is not a JSON object becomes a refused text if its brackets and
/// quotation marks are closed. Otherwise, or if the rest of the body is not a package, the whole
/// body becomes one refused text. No part of the body is lost. Throws only `std::bad_alloc`.
Package readPackage(std::string_view body);

}  // namespace qel::collector
