#pragma once

#include <chrono>
#include <memory>
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
  /// same number of digits. SQL failures are ignored.
  void deleteEntriesOlderThan(const std::string& table, std::chrono::seconds age);
  /// Deletes some of these rows in one short transaction, and keeps the next ID. Returns whether
  /// there may be more. Returns false after a failure.
  bool deleteSomeEntriesOlderThan(const std::string& table, std::chrono::seconds age);
};

}  // namespace qel::log::analytics::details
