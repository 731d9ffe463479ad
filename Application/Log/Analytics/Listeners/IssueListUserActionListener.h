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

  /// Each records "Action", and "ListControl" or "TreeControl" as "Source". A list action without a
  /// name is "Unknown". A tree action is recorded unchanged.
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
  /// Records the filter as "ChangedType" ("Unknown" if it has no name) and `changedStatus` as
  /// "ChangedStatus". For each filter, a detail with its name records whether it is shown. "1" is
  /// true, "0" is false.
  void onFilterStateChanged(qel::log::issue::ui::FilterType changedType, bool changedStatus,
                            const std::array<qel::log::issue::ui::FilterState, 4>& states) override;
  /// Records the button as "Clicked".
  void onNotificationButtonClick(const std::string& button) override;

  /// Records the action unchanged, with "ListControl" as "Source" like the issue list's own
  /// control.
  void onCollisionListControlContextMenuClicked(const std::string& action) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
