#pragma once

#include <string>

#include "Application/Log/Analytics/Items/FocusItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A BIM model got or lost the focus; the event is its name. Category "BimModel".
class QEL_ANALYTICS_EXPORT BimModelItem : public FocusItem {
 public:
  using FocusItem::FocusItem;

  std::string getCategory() const override;
};

}  // namespace qel::log::analytics::items
