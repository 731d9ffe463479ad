#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/QelBroadcaster/CollisionUserActionBroadcaster.h"
#include "host/QelIssueUi/UserActionBroadcaster.h"
#include "host/QelNotification/IssueStorageBroadcaster.h"
#include "host/QelNotification/NotificationTable.h"

namespace qel::notification {
namespace {

using namespace qel::log::issue;
using namespace qel::log::issue::ui;
using broadcaster::CollisionUserActionBroadcaster;
using broadcaster::CollisionUserActionListenerInterface;

using Storage = StorageListenerInterface;
using UserAction = UserActionListenerInterface;

std::shared_ptr<const IssueMessage> message(Fields& fields) {
  return std::make_shared<IssueMessage>(IssueMessage{
      fields.guid("id"), fields.text("action"), fields.text("systemType"),
      fields.text("objectDescription"), fields.enumerator<MessageCategory>("category")});
}

ObjectAttributes attributes(Fields& fields) { return fields.numberedTexts(); }

std::vector<std::shared_ptr<IssueSolver>> solvers(std::uint16_t count) {
  return {count, std::make_shared<IssueSolver>()};
}

std::shared_ptr<IssueInstance> issue(Fields& fields) {
  return std::make_shared<IssueInstance>(IssueInstance{
      fields.guid("id"), fields.enumerator<Priority>("priority"), fields.text("description"),
      fields.number("timestamp"), fields.objectOrNull("message", message),
      fields.objects("attributes", attributes), solvers(fields.integer<std::uint16_t>("solvers"))});
}

Broadcast issueAdded(Fields& fields) {
  auto added = fields.object("issue", issue);
  const bool flag = fields.flag("flag");
  return broadcastOf<IssueStorageBroadcaster>(&Storage::issueAdded, std::move(added), flag);
}

Broadcast issues(Fields& fields,
                 void (Storage::*operation)(const std::vector<std::shared_ptr<IssueInstance>>&)) {
  return broadcastOf<IssueStorageBroadcaster>(operation, fields.objects("issues", issue));
}

Broadcast removeAll(Fields& /*fields*/) {
  return broadcastOf<IssueStorageBroadcaster>(&Storage::issuesRemoveAll);
}

Broadcast userAction(void (UserAction::*operation)(const std::string&), const std::string& text) {
  return broadcastOf<UserActionBroadcaster>(operation, text);
}

Broadcast listMenu(Fields& fields) {
  return broadcastOf<UserActionBroadcaster>(
      &UserAction::onListControlContextMenuClicked,
      fields.enumerator<ListControlInterface::PopupAction>("action"));
}

Broadcast collisionMenu(Fields& fields) {
  return broadcastOf<CollisionUserActionBroadcaster>(
      &CollisionUserActionListenerInterface::onCollisionListControlContextMenuClicked,
      fields.text("action"));
}

Broadcast navigation(Fields& fields) {
  return broadcastOf<UserActionBroadcaster>(
      &UserAction::onUnreadItemsNavigatorClicked,
      fields.enumerator<UnreadItemsNavigator::NavigationDirection>("direction"));
}

std::array<FilterState, 4> filterStates(Fields& fields) {
  std::array<FilterState, 4> states;
  const auto shown = fields.flags("states", states.size());
  std::transform(shown.begin(), shown.end(), states.begin(),
                 [](bool flag) { return FilterState{flag}; });
  return states;
}

Broadcast filter(Fields& fields) {
  const auto changedType = fields.enumerator<FilterType>("changedType");
  const bool changedStatus = fields.flag("changedStatus");
  return broadcastOf<UserActionBroadcaster>(&UserAction::onFilterStateChanged, changedType,
                                            changedStatus, filterStates(fields));
}

constexpr std::array notifications{
    Notification{"issueAdded", issueAdded},
    Notification{"issuesRemoved", [](Fields& f) { return issues(f, &Storage::issuesRemoved); }},
    Notification{"issuesRemoveAll", removeAll},
    Notification{"issueReadStateChanged",
                 [](Fields& f) { return issues(f, &Storage::issueReadStateChanged); }},
    Notification{"onListControlContextMenuClicked", listMenu},
    Notification{"onTreeControlContextMenuClicked",
                 [](Fields& f) {
                   return userAction(&UserAction::onTreeControlContextMenuClicked,
                                     f.text("action"));
                 }},
    Notification{"onCollisionListControlContextMenuClicked", collisionMenu},
    Notification{"onUnreadItemsNavigatorClicked", navigation},
    Notification{"onSearchFilterFocusLost",
                 [](Fields& f) {
                   return userAction(&UserAction::onSearchFilterFocusLost, f.text("keyWord"));
                 }},
    Notification{"onFilterStateChanged", filter},
    Notification{"onNotificationButtonClick",
                 [](Fields& f) {
                   return userAction(&UserAction::onNotificationButtonClick, f.text("button"));
                 }},
};

}  // namespace

std::span<const Notification> issueNotifications() { return notifications; }

}  // namespace qel::notification
