#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

namespace qel::collector {

/// How `StoreWriter` forms transactions.
struct WriterSettings {
  std::chrono::milliseconds longestWrite{4000};      ///< of one transaction
  std::size_t largestWrite = std::size_t{48} << 20;  ///< memory of the uploads in one transaction
  std::optional<std::chrono::hours> retention;       ///< older rows are deleted
  /// After this time without packages the store is checked.
  std::chrono::milliseconds idleTime = std::chrono::hours(1);
  /// A transaction begins when packages with `batchRows` rows wait, or one of them waits for
  /// `batchTime`.
  /// @{
  std::chrono::milliseconds batchTime{0};
  std::size_t batchRows = 0;
  /// @}
};

}  // namespace qel::collector
