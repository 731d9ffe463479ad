#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A project was opened, closed, or restored after the program had ended uncleanly. The event is
/// the name of the project. Category "Project".
class QEL_ANALYTICS_EXPORT ProjectItem : public BaseEventItemWithDetail {
 public:
  /// The subcategory is the enumerator's name, or empty for any other value.
  enum class Event : std::uint32_t { Opened, Closed, Restored };

  /// `project` is the project's name.
  ProjectItem(Event event, std::string project);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  Event event_;
  std::string project_;
};

}  // namespace qel::log::analytics::items
