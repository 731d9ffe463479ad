#pragma once

#include <string>
#include <string_view>

#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// **Duplicates.** Until ClickHouse has merged a row that was sent twice, its copies differ only in
/// user, arrival and count. Figures that do not count rows therefore read without `FINAL`, which is
/// several times faster. Others read few rows and group them by key, or use `FINAL`.
struct ClickHouseFigure {
  std::string_view name;
  std::string_view columns;  ///< with commas between them
  /// The question to ClickHouse. All its values are literals. Throws `std::invalid_argument` if the
  /// filter has an impossible cursor.
  std::string (*question)(const Filter& filter);
};

/// Throws `std::invalid_argument` if there is no such figure.
const ClickHouseFigure& clickHouseFigure(std::string_view name);

}  // namespace qel::collector
