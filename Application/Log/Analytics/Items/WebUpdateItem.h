#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// The numbers of intact and of corrupt update packages. Category "WebUpdate", subcategory
/// "Reports", no event.
class QEL_ANALYTICS_EXPORT WebUpdateItem : public BaseEventItem {
 public:
  /// The details are "success" and "corrupt package", even if they are 0.
  WebUpdateItem(std::uint64_t success, std::uint64_t corrupt);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;

 private:
  std::uint64_t success_;
  std::uint64_t corrupt_;
};

}  // namespace qel::log::analytics::items
