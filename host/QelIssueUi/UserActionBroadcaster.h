#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::log::issue::ui {

/// The list in the issue list window.
class ListControlInterface {
 public:
  /// What its context menu offers.
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
  /// Towards which unread issue.
  enum class NavigationDirection : std::uint32_t { Previous, Next };
};

/// The kinds of issues that can be shown or hidden, in the order of their states.
enum class FilterType : std::uint32_t { Errors, Warnings, Messages, Collisions };

/// One of the buttons that show and hide issues.
struct FilterState {
  bool shown = false;  ///< the list has issues of its kind in view
};

/// Told of what the user does in the issue list window.
class UserActionListenerInterface {
 public:
  virtual ~UserActionListenerInterface() = default;

  /// The user chose from the context menu of the list, or of the tree; the tree's entries have
  /// texts of the host's choice (UTF-8).
  /// @{
  virtual void onListControlContextMenuClicked(ListControlInterface::PopupAction action) = 0;
  virtual void onTreeControlContextMenuClicked(const std::string& action) = 0;
  /// @}
  /// The user stepped to an unread issue.
  virtual void onUnreadItemsNavigatorClicked(
      UnreadItemsNavigator::NavigationDirection direction) = 0;
  /// The user left the search field; `keyWord` is what it holds (UTF-8), perhaps nothing.
  virtual void onSearchFilterFocusLost(const std::string& keyWord) = 0;
  /// `changedStatus` is what the state of `changedType` has become; `states` holds the state of
  /// every filter, indexed by `FilterType`.
  virtual void onFilterStateChanged(FilterType changedType, bool changedStatus,
                                    const std::array<FilterState, 4>& states) = 0;
  /// The user clicked a button of the notification dialog, here by the host's text for it (UTF-8).
  virtual void onNotificationButtonClick(const std::string& button) = 0;
};

/// The process's broadcaster of user actions in the issue list window.
class UserActionBroadcaster : public Broadcaster<UserActionListenerInterface> {
 public:
  /// Always the same object, whichever library asks; it is never destroyed.
  static UserActionBroadcaster& getInstance();
};

}  // namespace qel::log::issue::ui
