#pragma once

#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// Who uses the program. Category "User", without subcategory and event. The client makes none
/// itself.
class QEL_ANALYTICS_EXPORT UserInfoItem : public BaseEventItem {
 public:
  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

  /// The detail "Username", for which the platform is asked at each call; throws `qel::exception`
  /// when it has none.
  std::map<std::string, std::string> getDetails() const override;
};

}  // namespace qel::log::analytics::items
