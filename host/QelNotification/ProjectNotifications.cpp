#include <array>

#include "host/QelBroadcaster/ProjectBroadcaster.h"
#include "host/QelBroadcaster/SaveBroadcaster.h"
#include "host/QelNotification/NotificationTable.h"

namespace qel::notification {
namespace {

using namespace qel::broadcaster;
using namespace qel::broadcaster::event;

using Project = ProjectListenerInterface;

Broadcast projectOpen(Fields& fields) {
  return broadcastOf<ProjectBroadcaster>(
      &Project::onProjectOpened, ProjectOpenEvent{fields.text("project"), fields.text("info")});
}

Broadcast projectClose(Fields& fields) {
  return broadcastOf<ProjectBroadcaster>(&Project::onProjectClosed,
                                         ProjectCloseEvent{fields.text("project")});
}

Broadcast projectRestore(Fields& fields) {
  return broadcastOf<ProjectBroadcaster>(
      &Project::onProjectRestored,
      ProjectRestoreDialogEvent{fields.text("project"), fields.text("lastSave"),
                                fields.text("file"), fields.enumerator<RestoreAnswer>("answer")});
}

template <typename Event>
Broadcast focus(Fields& fields, void (Project::*operation)(const Event&)) {
  return broadcastOf<ProjectBroadcaster>(operation, Event{{fields.text("name")}});
}

Broadcast savePrompt(Fields& fields) {
  return broadcastOf<SaveBroadcaster>(
      &SaveListenerInterface::onSavePromptAnswered,
      SaveDialogEvent{fields.enumerator<SaveKind>("kind"), fields.text("message"),
                      fields.enumerator<SaveAnswer>("answer")});
}

Broadcast autoSave(Fields& fields) {
  return broadcastOf<SaveBroadcaster>(&SaveListenerInterface::onAutoSave,
                                      AutoSaveEvent{fields.enumerator<SaveKind>("kind"),
                                                    fields.text("path"), fields.flag("succeeded")});
}

constexpr std::array notifications{
    Notification{"onProjectOpened", projectOpen},
    Notification{"onProjectClosed", projectClose},
    Notification{"onProjectRestored", projectRestore},
    Notification{"onBimFileFocused",
                 [](Fields& f) { return focus(f, &Project::onBimFileFocused); }},
    Notification{"onBimFileUnfocused",
                 [](Fields& f) { return focus(f, &Project::onBimFileUnfocused); }},
    Notification{"onBimModelFocused",
                 [](Fields& f) { return focus(f, &Project::onBimModelFocused); }},
    Notification{"onBimModelUnfocused",
                 [](Fields& f) { return focus(f, &Project::onBimModelUnfocused); }},
    Notification{"onPresentationFocused",
                 [](Fields& f) { return focus(f, &Project::onPresentationFocused); }},
    Notification{"onPresentationUnfocused",
                 [](Fields& f) { return focus(f, &Project::onPresentationUnfocused); }},
    Notification{"onSavePromptAnswered", savePrompt},
    Notification{"onAutoSave", autoSave},
};

}  // namespace

std::span<const Notification> projectNotifications() { return notifications; }

}  // namespace qel::notification
