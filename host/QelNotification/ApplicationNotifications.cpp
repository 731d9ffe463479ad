#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelBroadcaster/CommandBroadcaster.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"
#include "host/QelNotification/NotificationTable.h"

namespace qel::notification {
namespace {

using namespace qel::broadcaster;
using namespace qel::broadcaster::event;

/// A general event with the texts of the notification.
class NotifiedGeneralEvent : public GeneralEventInterface {
 public:
  explicit NotifiedGeneralEvent(Fields& fields)
      : category_(fields.text("category")),
        subCategory_(fields.text("subcategory")),
        event_(fields.text("event")),
        details_(fields.texts("details")) {}

  std::string getCategory() const override { return category_; }
  std::string getSubCategory() const override { return subCategory_; }
  std::string getEvent() const override { return event_; }
  std::map<std::string, std::string> getDetails() const override { return details_; }

 private:
  const std::string category_;
  const std::string subCategory_;
  const std::string event_;
  const std::map<std::string, std::string> details_;
};

template <typename Event>
Broadcast action(Fields& fields, void (ActionListenerInterface::*operation)(const Event&)) {
  return broadcastOf<ActionBroadcaster>(operation,
                                        Event{{fields.text("name"), fields.texts("details")}});
}

template <typename Event>
Broadcast application(Fields& fields,
                      void (ApplicationListenerInterface::*operation)(const Event&)) {
  return broadcastOf<ApplicationBroadcaster>(operation, Event{{fields.text("text")}});
}

/// Windows programs often write an exception code as an unsigned number.
Broadcast crash(Fields& fields) {
  return broadcastOf<ApplicationBroadcaster>(
      &ApplicationListenerInterface::onApplicationCrashed,
      ApplicationCrashEvent{{fields.text("text")}, fields.enumerator<std::int32_t>("code")});
}

assert::AssertInfo assertInfo(Fields& fields) {
  assert::AssertInfo info;
  info.message = fields.text("message");
  info.function = fields.text("function");
  info.file = fields.text("file");
  info.line = fields.integer<int>("line");
  info.type = fields.enumerator<assert::AssertType>("type");
  return info;
}

Broadcast assertion(Fields& fields) {
  return broadcastOf<ApplicationBroadcaster>(
      &ApplicationListenerInterface::onApplicationAsserted,
      ApplicationAssertEvent{{fields.text("text")}, fields.object("assert", assertInfo)});
}

Broadcast general(Fields& fields) {
  return broadcastOf<GeneralBroadcaster>(
      &GeneralListenerInterface::onGeneralAction,
      std::shared_ptr<const GeneralEventInterface>(std::make_shared<NotifiedGeneralEvent>(fields)));
}

std::optional<std::map<std::string, std::string>> commandDetails(Fields& fields) {
  if (!fields.has("details")) {
    return std::nullopt;
  }
  return fields.texts("details");
}

Broadcast commandStart(Fields& fields) {
  return broadcastOf<CommandBroadcaster>(
      &CommandListenerInterface::onCommandStarted,
      CommandStartEvent{fields.text("id"), fields.text("text"),
                        fields.enumerator<CommandLocation>("location"), commandDetails(fields)});
}

Broadcast commandStop(Fields& fields) {
  return broadcastOf<CommandBroadcaster>(
      &CommandListenerInterface::onCommandStopped,
      CommandStopEvent{fields.text("id"), fields.text("text"), fields.flag("cancelled"),
                       commandDetails(fields)});
}

using Action = ActionListenerInterface;
using Application = ApplicationListenerInterface;

constexpr std::array notifications{
    Notification{"onBcfAction", [](Fields& f) { return action(f, &Action::onBcfAction); }},
    Notification{"onHelpAction", [](Fields& f) { return action(f, &Action::onHelpAction); }},
    Notification{"onProjectManagerAction",
                 [](Fields& f) { return action(f, &Action::onProjectManagerAction); }},
    Notification{"onGraphicAction", [](Fields& f) { return action(f, &Action::onGraphicAction); }},
    Notification{"onApplicationStarted",
                 [](Fields& f) { return application(f, &Application::onApplicationStarted); }},
    Notification{"onApplicationStopped",
                 [](Fields& f) { return application(f, &Application::onApplicationStopped); }},
    Notification{"onApplicationCrashed", crash},
    Notification{"onApplicationAsserted", assertion},
    Notification{"onGeneralAction", general},
    Notification{"onCommandStarted", commandStart},
    Notification{"onCommandStopped", commandStop},
};

}  // namespace

std::span<const Notification> applicationNotifications() { return notifications; }

}  // namespace qel::notification
