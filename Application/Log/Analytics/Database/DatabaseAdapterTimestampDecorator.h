#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"

namespace qel::log::analytics::details {

/// An adapter whose tables also record when each row was written, so that rows can be deleted by
/// age. The column `timestamp_utc` holds strings such as "2026-11-21 09:30:05", in UTC.
class QEL_ANALYTICS_EXPORT DatabaseAdapterTimestampDecorator : public DatabaseAdapter {
 public:
  using DatabaseAdapter::DatabaseAdapter;

  void addTableIfNotExists(const std::string& table) override;
  /// Deletes the rows that were written more than `age` ago, to the second. The current time is
  /// that of the system clock. Times are compared as strings, which is correct while both have the
  /// same number of digits. SQL failures are ignored. Rows up to the ID `examined` are kept; zero
  /// examines all.
  void deleteEntriesOlderThan(const std::string& table, std::chrono::seconds age,
                              std::int64_t examined = 0);
  /// The same for the next few thousand IDs that follow `examined`, in one short transaction that
  /// keeps the next ID. Returns the last ID that was examined; empty after a failure, or if no row
  /// follows.
  std::optional<std::int64_t> deleteSomeEntriesOlderThan(const std::string& table,
                                                         std::chrono::seconds age,
                                                         std::int64_t examined);
};

}  // namespace qel::log::analytics::details
