#pragma once

#include <string>

#include "Application/Log/Analytics/Items/FocusItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A presentation got or lost the focus; the event is its name. Category "Presentation".
class QEL_ANALYTICS_EXPORT PresentationItem : public FocusItem {
 public:
  using FocusItem::FocusItem;

  std::string getCategory() const override;
};

}  // namespace qel::log::analytics::items
