#pragma once

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::reports {

/// Reports, when the application has crashed, the memory use that led to it. Both operations wait
/// for no lock of the reporter's.
class QEL_ANALYTICS_EXPORT MemoryUsageReporterInterface {
 public:
  virtual ~MemoryUsageReporterInterface() = default;

  /// Each reports the samples since the last periodic report, which are kept, and the smallest and
  /// the largest of them. Without samples there is no report.
  /// @{
  virtual void reportDetailedMemoryUsageOfCurrentProcessForCrash() const = 0;
  virtual void reportDetailedMemoryUsageOfSystemForCrash() const = 0;
  /// @}
};

}  // namespace qel::log::analytics::reports
