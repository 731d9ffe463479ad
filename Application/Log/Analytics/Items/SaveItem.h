#pragma once

#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A save prompt was answered, or a file was saved automatically. Category "Save".
class QEL_ANALYTICS_EXPORT SaveItem : public BaseEventItemWithDetail {
 public:
  /// `kind` names what was saved. It becomes the subcategory.
  SaveItem(std::string kind, std::string event);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  std::string kind_;
  std::string event_;
};

}  // namespace qel::log::analytics::items
