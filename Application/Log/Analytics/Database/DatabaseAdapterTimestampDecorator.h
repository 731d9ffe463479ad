#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"

namespace qel::log::analytics::details {

/// An adapter whose tables also note when each row was written (`timestamp_utc`, "2026-11-21
/// 09:30:05" in UTC), so that rows can be deleted by age.
class QEL_ANALYTICS_EXPORT DatabaseAdapterTimestampDecorator : public DatabaseAdapter {
 public:
  using DatabaseAdapter::DatabaseAdapter;

  void addTableIfNotExists(const std::string& table) override;
  /// Deletes what was written more than `age` before the system clock's current second. The moments
  /// are compared as texts, which is right while both have the same number of digits. SQL failures
  /// are silent.
  void deleteEntriesOlderThan(const std::string& table, std::chrono::seconds age);
};

}  // namespace qel::log::analytics::details
