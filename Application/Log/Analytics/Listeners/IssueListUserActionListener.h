#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/CollisionUserActionBroadcaster.h"
#include "host/QelIssueUi/UserActionBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records what the user does in the issue list window and in the collision list.
class QEL_ANALYTICS_EXPORT IssueListUserActionListener
    : public qel::log::issue::ui::UserActionListenerInterface,
      public qel::broadcaster::CollisionUserActionListenerInterface {
 public:
  /// The databases outlive the listener.
  explicit IssueListUserActionListener(CipDatabases& databases) : databases_(databases) {}

  /// Each tells "Action", and "ListControl" or "TreeControl" as "Source". An action of the list
  /// that has no name is "Unknown"; the tree's action is told as it is.
  /// @{
  void onListControlContextMenuClicked(
      qel::log::issue::ui::ListControlInterface::PopupAction action) override;
  void onTreeControlContextMenuClicked(const std::string& action) override;
  /// @}
  /// Tells "Direction": "Previous", "Next", or "Unknown".
  void onUnreadItemsNavigatorClicked(
      qel::log::issue::ui::UnreadItemsNavigator::NavigationDirection direction) override;
  /// Tells the search text as "KeyWord", also an empty one.
  void onSearchFilterFocusLost(const std::string& keyWord) override;
  /// Tells the filter as "ChangedType" ("Unknown" if it has no name), `changedStatus` as
  /// "ChangedStatus", and under each filter's name whether it is shown; "1" is true, "0" is false.
  void onFilterStateChanged(qel::log::issue::ui::FilterType changedType, bool changedStatus,
                            const std::array<qel::log::issue::ui::FilterState, 4>& states) override;
  /// Tells the button as "Clicked".
  void onNotificationButtonClick(const std::string& button) override;

  /// Told as a click in the issue list's own list control, and with the action's text as it is.
  void onCollisionListControlContextMenuClicked(const std::string& action) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
