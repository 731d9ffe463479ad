#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::log::issue::ui {

/// The list in the issue list window.
class ListControlInterface {
 public:
  /// The entries of the list's context menu.
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
  /// The direction in which the button steps through unread issues.
  enum class NavigationDirection : std::uint32_t { Previous, Next };
};

/// The kinds of issues that filters show or hide. The values index the states in
/// `onFilterStateChanged`.
enum class FilterType : std::uint32_t { Errors, Warnings, Messages, Collisions };

/// The state of a button that shows or hides one kind of issues.
struct FilterState {
  bool shown = false;  ///< whether the list shows issues of this kind
};

/// Receives user actions in the issue list window.
class UserActionListenerInterface {
 public:
  virtual ~UserActionListenerInterface() = default;

  /// The user chose an entry of the context menu of the list or of the tree. For the tree, `action`
  /// is the host's text for the entry (UTF-8).
  /// @{
  virtual void onListControlContextMenuClicked(ListControlInterface::PopupAction action) = 0;
  virtual void onTreeControlContextMenuClicked(const std::string& action) = 0;
  /// @}
  /// The user stepped to an unread issue.
  virtual void onUnreadItemsNavigatorClicked(
      UnreadItemsNavigator::NavigationDirection direction) = 0;
  /// The user left the search field. `keyWord` is the content of the field (UTF-8), which may be
  /// empty.
  virtual void onSearchFilterFocusLost(const std::string& keyWord) = 0;
  /// The user changed a filter. `changedStatus` is the new state of the filter `changedType`.
  /// `states` contains the state of every filter, indexed by `FilterType`.
  virtual void onFilterStateChanged(FilterType changedType, bool changedStatus,
                                    const std::array<FilterState, 4>& states) = 0;
  /// The user clicked a button of the notification dialog. `button` is the host's text for the
  /// button (UTF-8).
  virtual void onNotificationButtonClick(const std::string& button) = 0;
};

/// The process's broadcaster of user actions in the issue list window.
class UserActionBroadcaster : public Broadcaster<UserActionListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static UserActionBroadcaster& getInstance();
};

}  // namespace qel::log::issue::ui
