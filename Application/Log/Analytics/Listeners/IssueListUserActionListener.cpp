#include "Application/Log/Analytics/Listeners/IssueListUserActionListener.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"
#include "Application/Log/Analytics/Items/IssueListUserActionEvent.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"

namespace qel::log::analytics::listeners {
namespace {

using items::textOf;
using Event = items::IssueListUserActionEvent;
using namespace qel::log::issue::ui;

constexpr std::array<std::string_view, 7> popupActionTexts{
    "Expand", "Collapse", "Read", "ActivateModel", "Zoom", "Edit", "Resolve"};
constexpr std::array<std::string_view, 2> directionTexts{"Previous", "Next"};
constexpr std::array<std::string_view, 4> filterTypeTexts{"Errors", "Warnings", "Messages",
                                                          "Collisions"};

void insertContextMenuClick(CipDatabases& databases, Event::List list, const std::string& action,
                            const std::string& source) {
  auto item = std::make_unique<Event>(list, Event::Control::ContextMenu);
  item->addDetail("Action", action);
  item->addDetail("Source", source);
  insertItem(databases, std::move(item));
}

void insertWithDetail(CipDatabases& databases, Event::Control control, const std::string& key,
                      const std::string& value) {
  auto item = std::make_unique<Event>(Event::List::Issue, control);
  item->addDetail(key, value);
  insertItem(databases, std::move(item));
}

}  // namespace

void IssueListUserActionListener::onListControlContextMenuClicked(
    ListControlInterface::PopupAction action) {
  insertContextMenuClick(databases_, Event::List::Issue,
                         textOf(popupActionTexts, action, "Unknown"), "ListControl");
}

void IssueListUserActionListener::onTreeControlContextMenuClicked(const std::string& action) {
  insertContextMenuClick(databases_, Event::List::Issue, action, "TreeControl");
}

void IssueListUserActionListener::onUnreadItemsNavigatorClicked(
    UnreadItemsNavigator::NavigationDirection direction) {
  insertWithDetail(databases_, Event::Control::UnreadIssuesNavigator, "Direction",
                   textOf(directionTexts, direction, "Unknown"));
}

void IssueListUserActionListener::onSearchFilterFocusLost(const std::string& keyWord) {
  insertWithDetail(databases_, Event::Control::SearchFilter, "KeyWord", keyWord);
}

void IssueListUserActionListener::onFilterStateChanged(FilterType changedType, bool changedStatus,
                                                       const std::array<FilterState, 4>& states) {
  auto item = std::make_unique<Event>(Event::List::Issue, Event::Control::FilterState);
  item->addDetail("ChangedType", textOf(filterTypeTexts, changedType, "Unknown"));
  item->addDetail("ChangedStatus", changedStatus ? "1" : "0");
  for (std::size_t type = 0; type < states.size(); ++type) {
    item->addDetail(std::string(filterTypeTexts[type]), states[type].shown ? "1" : "0");
  }
  insertItem(databases_, std::move(item));
}

void IssueListUserActionListener::onNotificationButtonClick(const std::string& button) {
  insertWithDetail(databases_, Event::Control::NotificationDialog, "Clicked", button);
}

void IssueListUserActionListener::onCollisionListControlContextMenuClicked(
    const std::string& action) {
  insertContextMenuClick(databases_, Event::List::Collision, action, "ListControl");
}

}  // namespace qel::log::analytics::listeners
