#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A user action in the issue list or collision list window. Category "IssueListAction".
class QEL_ANALYTICS_EXPORT IssueListUserActionEvent : public BaseEventItemWithDetail {
 public:
  /// The list that was used. The subcategory is the enumerator's name, or "Unknown" for any other
  /// value.
  enum class List : std::uint32_t { Issue, Collision };
  /// The control that was used. The event is the enumerator's name, or "Unknown" for any other
  /// value.
  enum class Control : std::uint32_t {
    ContextMenu,
    UnreadIssuesNavigator,
    SearchFilter,
    FilterState,
    NotificationDialog
  };

  /// Creates an event with no details.
  IssueListUserActionEvent(List list, Control control);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  List list_;
  Control control_;
};

}  // namespace qel::log::analytics::items
