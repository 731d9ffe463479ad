#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::log::issue::ui {

/// The list in the issue list window.
class ListControlInterface {
 public:
  /// The entries of its context menu.
  enum class PopupAction : std::uint32_t {
    Expand,
    Collapse,
    Read,
    ActivateModel,
    Zoom,
    Edit,
    Resolve
  };
};

/// The buttons that step through unread issues.
class UnreadItemsNavigator {
 public:
  /// To which unread issue.
  enum class NavigationDirection : std::uint32_t { Previous, Next };
};

/// The kinds of issues that filters show or hide, in the order of their states.
enum class FilterType : std::uint32_t { Errors, Warnings, Messages, Collisions };

/// The state of a button that shows and hides issues.
struct FilterState {
  bool shown = false;  ///< the list shows issues of this kind
};

/// Receives user actions in the issue list window.
class UserActionListenerInterface {
 public:
  virtual ~UserActionListenerInterface() = default;

  /// The user chose an entry of the context menu of the list or of the tree. The host chooses the
  /// texts of the tree's entries (UTF-8).
  /// @{
  virtual void onListControlContextMenuClicked(ListControlInterface::PopupAction action) = 0;
  virtual void onTreeControlContextMenuClicked(const std::string& action) = 0;
  /// @}
  /// The user stepped to an unread issue.
  virtual void onUnreadItemsNavigatorClicked(
      UnreadItemsNavigator::NavigationDirection direction) = 0;
  /// The user left the search field. `keyWord` is its content (UTF-8), which may be empty.
  virtual void onSearchFilterFocusLost(const std::string& keyWord) = 0;
  /// `changedStatus` is the new state of `changedType`. `states` has the state of every filter,
  /// indexed by `FilterType`.
  virtual void onFilterStateChanged(FilterType changedType, bool changedStatus,
                                    const std::array<FilterState, 4>& states) = 0;
  /// The user clicked a button of the notification dialog. `button` is the host's text (UTF-8).
  virtual void onNotificationButtonClick(const std::string& button) = 0;
};

/// The process's broadcaster of user actions in the issue list window.
class UserActionBroadcaster : public Broadcaster<UserActionListenerInterface> {
 public:
  /// The same object in every library. Never destroyed.
  static UserActionBroadcaster& getInstance();
};

}  // namespace qel::log::issue::ui
