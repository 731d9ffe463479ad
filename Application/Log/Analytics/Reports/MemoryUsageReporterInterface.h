#pragma once

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::reports {

/// Reports the memory usage before a crash of the application. The operations do not wait for any
/// lock of the reporter.
class QEL_ANALYTICS_EXPORT MemoryUsageReporterInterface {
 public:
  virtual ~MemoryUsageReporterInterface() = default;

  /// Each reports the samples since the last periodic report, and the smallest and the largest of
  /// them. The samples are kept. If there are no samples, nothing is reported.
  /// @{
  virtual void reportDetailedMemoryUsageOfCurrentProcessForCrash() const = 0;
  virtual void reportDetailedMemoryUsageOfSystemForCrash() const = 0;
  /// @}
};

}  // namespace qel::log::analytics::reports
