#pragma once

#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseItem.h"
#include "Application/Log/Analytics/Items/EventInterface.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A record of an event. Subclasses define the event, and this class renders it.
class QEL_ANALYTICS_EXPORT BaseEventItem : public BaseItem, public EventInterface {
 public:
  /// A JSON object with the members "Category", "Subcategory", "Event", "InstallationId",
  /// "SessionId", "Timestamp" and "Details", in this order. "Subcategory", "Event" and "Details"
  /// are omitted if they are empty.
  std::string toJson() const override;

 private:
  /// The map of which `getDetails` returns a copy, or null if there is no such map.
  virtual const std::map<std::string, std::string>* storedDetails() const { return nullptr; }
};

}  // namespace qel::log::analytics::items
