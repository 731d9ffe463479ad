#pragma once

#include <cstdint>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::reports {

/// Provides the results of web updates of the installation. The host implements this interface. Its
/// operations are called on the thread that broadcasts the start of the application.
class QEL_ANALYTICS_EXPORT WebUpdateReporterInterface {
 public:
  virtual ~WebUpdateReporterInterface() = default;

  /// Whether there are results to report. The counts are read only if this returns true.
  virtual bool isInformationAvailable() const = 0;
  /// Discards the results. Called once they have been reported.
  virtual void reset() = 0;
  /// The number of intact update packages.
  virtual std::uint64_t getSuccessCount() const = 0;
  /// The number of corrupt update packages.
  virtual std::uint64_t getCorruptPackageCount() const = 0;
};

}  // namespace qel::log::analytics::reports
