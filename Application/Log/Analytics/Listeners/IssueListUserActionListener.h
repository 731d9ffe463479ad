#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/CollisionUserActionBroadcaster.h"
#include "host/QelIssueUi/UserActionBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records the actions of the user in the issue list window and in the collision list.
class QEL_ANALYTICS_EXPORT IssueListUserActionListener
    : public qel::log::issue::ui::UserActionListenerInterface,
      public qel::broadcaster::CollisionUserActionListenerInterface {
 public:
  /// The databases must outlive the listener.
  explicit IssueListUserActionListener(CipDatabases& databases) : databases_(databases) {}

  /// Each records the action as "Action", and "ListControl" or "TreeControl" as "Source". A list
  /// action that has no name is recorded as "Unknown". A tree action is recorded unchanged.
  /// @{
  void onListControlContextMenuClicked(
      qel::log::issue::ui::ListControlInterface::PopupAction action) override;
  void onTreeControlContextMenuClicked(const std::string& action) override;
  /// @}
  /// Records "Direction" as "Previous", "Next" or "Unknown".
  void onUnreadItemsNavigatorClicked(
      qel::log::issue::ui::UnreadItemsNavigator::NavigationDirection direction) override;
  /// Records the search text as "KeyWord", even if it is empty.
  void onSearchFilterFocusLost(const std::string& keyWord) override;
  /// Records the filter as "ChangedType" ("Unknown" if the filter has no name) and `changedStatus`
  /// as "ChangedStatus". For each filter, a detail with the name of the filter records whether its
  /// issues are shown. "1" means true, and "0" means false.
  void onFilterStateChanged(qel::log::issue::ui::FilterType changedType, bool changedStatus,
                            const std::array<qel::log::issue::ui::FilterState, 4>& states) override;
  /// Records the button as "Clicked".
  void onNotificationButtonClick(const std::string& button) override;

  /// Records the action unchanged, with "ListControl" as "Source", as for the issue list.
  void onCollisionListControlContextMenuClicked(const std::string& action) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
