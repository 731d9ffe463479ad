#pragma once

#include <vector>

#include "Application/Log/Analytics/Items/details/ApplicationInformation.h"
#include "Application/Log/Analytics/Items/details/MachineInformation.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// Describes the machine and the host applications installed on it.
class QEL_ANALYTICS_EXPORT EnvironmentInterface {
 public:
  virtual ~EnvironmentInterface() = default;

  /// The machine. The references are valid as long as the object lives.
  /// @{
  virtual const details::OsEnvironmentInfo& getOsEnvironmentInfo() const = 0;
  virtual const details::HardwareEnvironmentInfo& getHardwareEnvironmentInfo() const = 0;
  /// @}
  /// The installed host applications, including the running one. The reference is valid as long as
  /// the object lives.
  virtual const std::vector<details::QelEnvironmentInfo>& getQelEnvironmentInfo() const = 0;
};

}  // namespace qel::log::analytics::items
