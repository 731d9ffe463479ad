#pragma once

#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// Asks the server to note the user's location as it sees it; the item itself carries none.
/// Category "User", subcategory "Location", no event; the only detail, "set-on-backend", is a fixed
/// GUID.
class QEL_ANALYTICS_EXPORT UserLocationItem : public BaseEventItem {
 public:
  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;
};

}  // namespace qel::log::analytics::items
