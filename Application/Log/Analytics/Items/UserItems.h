#pragma once

#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// The name of the user. Category "User", no subcategory, no event. The client never creates this
/// item itself.
class QEL_ANALYTICS_EXPORT UserInfoItem : public BaseEventItem {
 public:
  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

  /// The detail "Username". Each call asks the platform for the name. Throws `qel::exception` if
  /// the platform knows no name.
  std::map<std::string, std::string> getDetails() const override;
};

/// Asks the server to record the user's location as the server sees it. The item itself holds no
/// location. Category "User", subcategory "Location", no event. The only detail, "set-on-backend",
/// is a fixed GUID.
class QEL_ANALYTICS_EXPORT UserLocationItem : public BaseEventItem {
 public:
  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;
};

}  // namespace qel::log::analytics::items
