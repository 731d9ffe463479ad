#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// The view in which the user acted. The category is "BCF", "Help", "Start Page", "Project Manager"
/// or "Graphic". It is "Unknown" for any other value.
enum class ActionArea : std::uint32_t { Bcf, Help, StartPage, ProjectManager, Graphic };

/// An action of the user in a view of the program. The subcategory is "Action".
class QEL_ANALYTICS_EXPORT ActionItem : public BaseEventItemWithDetail {
 public:
  /// `event` is the host's name for the action.
  ActionItem(const ActionArea& area, const std::string& event,
             const std::map<std::string, std::string>& details);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  ActionArea area_;
  std::string event_;
};

}  // namespace qel::log::analytics::items
