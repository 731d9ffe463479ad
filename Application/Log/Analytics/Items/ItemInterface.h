#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelDateTime/DateTime.h"
#include "host/QelId/Guid.h"

namespace qel::log::analytics::items {

/// Where and when a record was made.
class QEL_ANALYTICS_EXPORT ItemInterface {
 public:
  virtual ~ItemInterface() = default;

  /// Which installation and which run of the program it belongs to.
  /// @{
  virtual const std::string& getInstallationId() const = 0;
  virtual const Guid& getSessionId() const = 0;
  /// @}
  /// When it happened.
  virtual const datetime::DateTime& getTime() const = 0;
};

}  // namespace qel::log::analytics::items
