#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"
#include "host/QelDateTime/DateTime.h"

namespace qel::log::analytics::items {

/// Used memory in KB. An item holds values that were added as details, readings with their times,
/// or both. Category "MemoryUsage".
class QEL_ANALYTICS_EXPORT MemoryUsageItem : public BaseEventItemWithDetail {
 public:
  /// The memory of the machine or of the process. The subcategory is the enumerator's name, or
  /// empty for any other value.
  enum class Scope : std::uint32_t { Total, Application };
  /// The occasion of the report. The event is the enumerator's name, or empty for any other value.
  enum class Phase : std::uint32_t { Runtime, Crashed };

  /// Creates an item with no details and no readings.
  MemoryUsageItem(Scope scope, Phase phase);

  /// Adds readings in KB, keyed by time. If a time already has a reading, that reading is kept.
  void addDetailedMemoryUsage(const std::map<datetime::DateTime, unsigned long long>& readings);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

  /// The added details, and one detail for each second that has readings. Its key is the number of
  /// the second, and its value is the earliest reading. Keys are sorted as strings, so "1000" comes
  /// before "999".
  std::map<std::string, std::string> getDetails() const override;

 private:
  Scope scope_;
  Phase phase_;
  std::map<datetime::DateTime, unsigned long long> readings_;
};

}  // namespace qel::log::analytics::items
