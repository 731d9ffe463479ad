#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// The user did something in the issue list's or the collision list's window. Category
/// "IssueListAction".
class QEL_ANALYTICS_EXPORT IssueListUserActionEvent : public BaseEventItemWithDetail {
 public:
  /// Whose window: the subcategory in these words, "Unknown" for any other value.
  enum class List : std::uint32_t { Issue, Collision };
  /// What the user worked with: the event in these words, "Unknown" for any other value.
  enum class Control : std::uint32_t {
    ContextMenu,
    UnreadIssuesNavigator,
    SearchFilter,
    FilterState,
    NotificationDialog
  };

  /// Has no details yet.
  IssueListUserActionEvent(List list, Control control);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  List list_;
  Control control_;
};

}  // namespace qel::log::analytics::items
