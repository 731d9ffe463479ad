#pragma once

#include <string>

#include "Application/Log/Analytics/Items/FocusItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A BIM file got or lost the focus; the event is its name. Category "BimFile".
class QEL_ANALYTICS_EXPORT BimFileItem : public FocusItem {
 public:
  using FocusItem::FocusItem;

  std::string getCategory() const override;
};

}  // namespace qel::log::analytics::items
