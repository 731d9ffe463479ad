#pragma once

#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// An event that keeps a map of details.
class QEL_ANALYTICS_EXPORT BaseEventItemWithDetail : public BaseEventItem {
 public:
  /// Starts with these details, or with none.
  /// @{
  BaseEventItemWithDetail() = default;
  explicit BaseEventItemWithDetail(std::map<std::string, std::string> details);
  /// @}

  /// Inserts a detail; a key that is already there keeps its value.
  void addDetail(const std::string& key, const std::string& value);

  /// Who overrides this overrides `addDetailsTo` as well.
  std::map<std::string, std::string> getDetails() const override;

 protected:
  /// Copies no details.
  void addDetailsTo(json::JsonObject& json) const override;

 private:
  std::map<std::string, std::string> details_;
};

}  // namespace qel::log::analytics::items
