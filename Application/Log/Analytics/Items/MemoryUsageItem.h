#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"
#include "host/QelDateTime/DateTime.h"

namespace qel::log::analytics::items {

/// How much memory was in use, in KB: figures added as details, readings with their times, or both.
/// Category "MemoryUsage".
class QEL_ANALYTICS_EXPORT MemoryUsageItem : public BaseEventItemWithDetail {
 public:
  /// Whose memory, the machine's or the process's: the subcategory in these words, none for any
  /// other value.
  enum class Scope : std::uint32_t { Total, Application };
  /// When it is reported: the event in these words, none for any other value.
  enum class Phase : std::uint32_t { Runtime, Crashed };

  /// Has no figures and no readings yet.
  MemoryUsageItem(Scope scope, Phase phase);

  /// Adds readings in KB by their times; a time that is already there keeps its reading.
  void addDetailedMemoryUsage(const std::map<datetime::DateTime, unsigned long long>& readings);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

  /// The details that were added, and one for each second with readings: the earliest of them,
  /// under the second's number. Keys are texts, so "1000" stands before "999".
  std::map<std::string, std::string> getDetails() const override;

 private:
  Scope scope_;
  Phase phase_;
  std::map<datetime::DateTime, unsigned long long> readings_;
};

}  // namespace qel::log::analytics::items
