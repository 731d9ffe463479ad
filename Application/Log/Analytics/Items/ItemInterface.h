#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelDateTime/DateTime.h"
#include "host/QelId/Guid.h"

namespace qel::log::analytics::items {

/// The origin and the time of a record.
class QEL_ANALYTICS_EXPORT ItemInterface {
 public:
  virtual ~ItemInterface() = default;

  /// The IDs of the installation and of the run of the program.
  /// @{
  virtual const std::string& getInstallationId() const = 0;
  virtual const Guid& getSessionId() const = 0;
  /// @}
  /// The time of the event.
  virtual const datetime::DateTime& getTime() const = 0;
};

}  // namespace qel::log::analytics::items
