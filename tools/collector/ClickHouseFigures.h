#pragma once

#include <string>
#include <string_view>

#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// **Duplicates.** Until ClickHouse has merged a row that was sent twice, its copies differ only in
/// user, arrival and count. Figures of sessions come from `session_days`, which copies do not
/// change. Others sum up counts with `FINAL`, or read few rows and group them by key.
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
