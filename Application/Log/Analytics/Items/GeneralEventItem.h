#pragma once

#include <map>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"

namespace qel::log::analytics::items {

/// An event of the host that describes itself. The event is read when the item is rendered, on the
/// rendering thread. If there is no event, all strings and the details are empty.
class QEL_ANALYTICS_EXPORT GeneralEventItem : public BaseEventItem {
 public:
  /// The event that the host broadcasts. It defines its own category, subcategory, event and
  /// details.
  using HostEvent = broadcaster::GeneralEventInterface;

  /// `event` may be null. The thread that releases the last reference destroys the event. This may
  /// be the rendering thread.
  explicit GeneralEventItem(std::shared_ptr<const HostEvent> event);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;

 private:
  std::shared_ptr<const HostEvent> event_;
};

}  // namespace qel::log::analytics::items
