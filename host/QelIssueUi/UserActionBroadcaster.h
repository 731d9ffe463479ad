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
  enum class NavigationDirection : std::uint32_t { Previous, Next };
};

/// The kinds of issues that can be shown or hidden, in the order of their states.
enum class FilterType : std::uint32_t { Errors, Warnings, Messages, Collisions };

struct FilterState {
  bool shown = false;
};

/// Told of what the user does in the issue list window.
class UserActionListenerInterface {
 public:
  virtual ~UserActionListenerInterface() = default;

  virtual void onListControlContextMenuClicked(ListControlInterface::PopupAction action) = 0;
  virtual void onTreeControlContextMenuClicked(const std::string& action) = 0;
  virtual void onUnreadItemsNavigatorClicked(
      UnreadItemsNavigator::NavigationDirection direction) = 0;
  virtual void onSearchFilterFocusLost(const std::string& keyWord) = 0;
  /// `states` holds the state of every filter, indexed by `FilterType`.
  virtual void onFilterStateChanged(FilterType changedType, bool changedStatus,
                                    const std::array<FilterState, 4>& states) = 0;
  virtual void onNotificationButtonClick(const std::string& button) = 0;
};

/// The process's broadcaster of user actions in the issue list window.
class UserActionBroadcaster : public Broadcaster<UserActionListenerInterface> {
 public:
  static UserActionBroadcaster& getInstance();
};

}  // namespace qel::log::issue::ui
