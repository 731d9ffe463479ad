#pragma once

#include <cstdint>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::reports {

/// What the host has to tell about the web updates of its installation. Implemented by the host;
/// called on the thread that broadcasts the application's start.
class QEL_ANALYTICS_EXPORT WebUpdateReporterInterface {
 public:
  virtual ~WebUpdateReporterInterface() = default;

  /// Whether there is something to report; the counts are asked for only then.
  virtual bool isInformationAvailable() const = 0;
  /// Discards the information, which has been reported.
  virtual void reset() = 0;
  /// Update packages that arrived whole.
  virtual std::uint64_t getSuccessCount() const = 0;
  /// Update packages that were found corrupt.
  virtual std::uint64_t getCorruptPackageCount() const = 0;
};

}  // namespace qel::log::analytics::reports
