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
  explicit IssueListUserActionListener(CipDatabases& databases) : databases_(databases) {}

  void onListControlContextMenuClicked(
      qel::log::issue::ui::ListControlInterface::PopupAction action) override;
  void onTreeControlContextMenuClicked(const std::string& action) override;
  void onUnreadItemsNavigatorClicked(
      qel::log::issue::ui::UnreadItemsNavigator::NavigationDirection direction) override;
  void onSearchFilterFocusLost(const std::string& keyWord) override;
  void onFilterStateChanged(qel::log::issue::ui::FilterType changedType, bool changedStatus,
                            const std::array<qel::log::issue::ui::FilterState, 4>& states) override;
  void onNotificationButtonClick(const std::string& button) override;

  /// Told as a click in the issue list's own list control, and with the action's text as it is.
  void onCollisionListControlContextMenuClicked(const std::string& action) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
