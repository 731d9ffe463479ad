#pragma once

#include <map>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"

namespace qel::log::analytics::items {

/// An event of the host that describes itself. It is asked when the item is rendered, on the thread
/// that renders; without one, all texts and the details are empty.
class QEL_ANALYTICS_EXPORT GeneralEventItem : public BaseEventItem {
 public:
  /// What the host broadcasts: it names its own category, subcategory, event and details.
  using HostEvent = broadcaster::GeneralEventInterface;

  /// `event` may be null. Whoever lets go of it last destroys it, which may be the thread that
  /// renders.
  explicit GeneralEventItem(std::shared_ptr<const HostEvent> event);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;

 private:
  std::shared_ptr<const HostEvent> event_;
};

}  // namespace qel::log::analytics::items
