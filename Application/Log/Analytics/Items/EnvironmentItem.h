#pragma once

#include <string>
#include <vector>

#include "Application/Log/Analytics/Items/BaseItem.h"
#include "Application/Log/Analytics/Items/EnvironmentInterface.h"
#include "Application/Log/Analytics/Items/details/ApplicationInformation.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A description of the machine and the host applications installed on it.
class QEL_ANALYTICS_EXPORT EnvironmentItem : public BaseItem, public EnvironmentInterface {
 public:
  /// The first current entry of `applications` is the active application. If there is no current
  /// entry, all values of the active application are empty. `isInternal` marks machines of the
  /// program's vendor.
  EnvironmentItem(const details::OsEnvironmentInfo& os,
                  const details::HardwareEnvironmentInfo& hardware,
                  const std::vector<details::QelEnvironmentInfo>& applications, bool isInternal);

  const details::OsEnvironmentInfo& getOsEnvironmentInfo() const override { return os_; }
  const details::HardwareEnvironmentInfo& getHardwareEnvironmentInfo() const override {
    return hardware_;
  }
  const std::vector<details::QelEnvironmentInfo>& getQelEnvironmentInfo() const override {
    return applications_;
  }

  /// A JSON object with the members "InstallationId", "SessionId", "Timestamp", "IsInternal",
  /// "CurrentActiveApplication", "OS", "Hardware" and "InstalledApplications", always all of them
  /// in this order.
  std::string toJson() const override;

 private:
  details::OsEnvironmentInfo os_;
  details::HardwareEnvironmentInfo hardware_;
  std::vector<details::QelEnvironmentInfo> applications_;
  details::ApplicationInfo currentApplication_;
  bool isInternal_;
};

}  // namespace qel::log::analytics::items
