#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"

namespace qel::log::analytics::details {

/// An adapter whose tables also hold the time of writing of each row, so that rows can be deleted
/// by age. The column is `timestamp_utc`, with texts such as "2026-11-21 09:30:05" in UTC.
class QEL_ANALYTICS_EXPORT DatabaseAdapterTimestampDecorator : public DatabaseAdapter {
 public:
  using DatabaseAdapter::DatabaseAdapter;

  void addTableIfNotExists(const std::string& table) override;
  /// Deletes the rows that were written more than `age` before the current second of the system
  /// clock. Times are compared as texts, which is correct while both have the same number of
  /// digits. SQL failures are ignored.
  void deleteEntriesOlderThan(const std::string& table, std::chrono::seconds age);
};

}  // namespace qel::log::analytics::details
