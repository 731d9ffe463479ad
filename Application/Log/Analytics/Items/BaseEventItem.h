#pragma once

#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseItem.h"
#include "Application/Log/Analytics/Items/EventInterface.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A record of something that happened. Subclasses say what; this class renders it.
class QEL_ANALYTICS_EXPORT BaseEventItem : public BaseItem, public EventInterface {
 public:
  /// The members "Category", "Subcategory", "Event", "InstallationId", "SessionId", "Timestamp" and
  /// "Details", in this order. "Subcategory", "Event" and "Details" are left out when empty.
  std::string toJson() const override;

 protected:
  /// Adds the member "Details" with what `getDetails` returns, unless that is empty.
  virtual void addDetailsTo(json::JsonObject& json) const;
  /// Adds the member "Details", unless there are none.
  static void addDetails(json::JsonObject& json, const std::map<std::string, std::string>& details);
};

}  // namespace qel::log::analytics::items
