#include "tests/docs/RecordedEvents.h"

#include <chrono>
#include <memory>

#include "Application/Log/Analytics/Items/ActionItem.h"
#include "Application/Log/Analytics/Items/ApplicationItem.h"
#include "Application/Log/Analytics/Items/BimFileItem.h"
#include "Application/Log/Analytics/Items/BimModelItem.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "Application/Log/Analytics/Items/GeneralEventItem.h"
#include "Application/Log/Analytics/Items/IssueListUserActionEvent.h"
#include "Application/Log/Analytics/Items/PresentationItem.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"
#include "Application/Log/Analytics/Items/UserInfoItem.h"
#include "Application/Log/Analytics/Items/UserLocationItem.h"
#include "Application/Log/Analytics/Items/WebUpdateItem.h"
#include "Application/Log/Analytics/Listeners/ActionListener.h"
#include "Application/Log/Analytics/Listeners/ApplicationListener.h"
#include "Application/Log/Analytics/Listeners/CommandListener.h"
#include "Application/Log/Analytics/Listeners/GeneralListener.h"
#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"
#include "Application/Log/Analytics/Listeners/IssueListUserActionListener.h"
#include "Application/Log/Analytics/Listeners/ProjectListener.h"
#include "Application/Log/Analytics/Listeners/SaveListener.h"
#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace qel::test {
namespace {

using namespace qel::log;
using namespace qel::log::analytics;
using namespace qel::log::analytics::items;

constexpr std::uint32_t moreThanAnyEnumerationNames = 16;
const std::string& text = hostsText;
const std::map<std::string, std::string> hostsDetails{{hostsKeys, hostsText}};

class HostsEvent : public qel::broadcaster::event::GeneralEventInterface {
 public:
  std::string getCategory() const override { return text; }
  std::string getSubCategory() const override { return text; }
  std::string getEvent() const override { return text; }
  std::map<std::string, std::string> getDetails() const override { return hostsDetails; }
};

class HostsInformation : public IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string&) const override { return text; }
  std::string getMessageSystemTypeText(const issue::IssueMessage&) const override { return text; }
  std::string getMessageObjectDescriptionText(const issue::IssueMessage&) const override {
    return text;
  }
  std::string getObjectAttributeText(std::uint32_t, const issue::ObjectAttributes&) const override {
    return text;
  }
};

void workWithActionsAndCommands(CipDatabases& databases) {
  listeners::ActionListener actions(databases);
  actions.onBcfAction({{text, hostsDetails}});
  actions.onHelpAction({{text, hostsDetails}});
  actions.onProjectManagerAction({{text, hostsDetails}});
  actions.onGraphicAction({{text, hostsDetails}});
  listeners::CommandListener commands(databases);
  commands.onCommandStarted({"", text, {}, hostsDetails});
  for (const bool cancelled : {false, true}) {
    commands.onCommandStopped({"", text, cancelled, hostsDetails});
  }
  listeners::GeneralListener general(databases);
  general.onGeneralAction(std::make_shared<HostsEvent>());
  general.onGeneralAction(nullptr);
}

void workWithProjects(CipDatabases& databases) {
  listeners::ProjectListener projects(databases);
  projects.onProjectOpened({text, ""});
  projects.onProjectOpened({text, "information"});
  projects.onProjectClosed({text});
  projects.onProjectRestored({text, "", "", {}});
  projects.onBimFileFocused({{text}});
  projects.onBimFileUnfocused({{text}});
  projects.onBimModelFocused({{text}});
  projects.onBimModelUnfocused({{text}});
  projects.onPresentationFocused({{text}});
  projects.onPresentationUnfocused({{text}});
  listeners::SaveListener saves(databases);
  for (std::uint32_t kind = 0; kind < moreThanAnyEnumerationNames; ++kind) {
    saves.onSavePromptAnswered({qel::broadcaster::SaveKind{kind}, "", {}});
    saves.onAutoSave({qel::broadcaster::SaveKind{kind}, "", true});
  }
}

void workWithIssues(CipDatabases& databases) {
  listeners::IssueListStorageListener storage(databases, std::make_unique<HostsInformation>());
  const auto bare = std::make_shared<issue::IssueInstance>();
  const auto full = std::make_shared<issue::IssueInstance>();
  full->message = std::make_shared<issue::IssueMessage>();
  full->objectAttributes = {{}};
  storage.issueAdded(bare, false);
  storage.issueAdded(full, false);
  storage.issuesRemoved({bare, full});
  storage.issuesRemoveAll();
  storage.issueReadStateChanged({bare});
  listeners::IssueListUserActionListener actions(databases);
  actions.onListControlContextMenuClicked({});
  actions.onTreeControlContextMenuClicked("");
  actions.onCollisionListControlContextMenuClicked("");
  actions.onUnreadItemsNavigatorClicked({});
  actions.onSearchFilterFocusLost("");
  actions.onFilterStateChanged({}, true, {});
  actions.onNotificationButtonClick("");
}

void startCrashAndStop(MemoryStorage& storage) {
  Tally samples;
  reports::MemoryUsageOptions options;
  options.samplingInterval = std::chrono::milliseconds(1);
  options.usedByProcessInKB = [&] {
    samples.add();
    return 1;
  };
  const auto observer = std::make_shared<reports::MemoryUsageObserver>(*storage.databases, options);
  observer->start();
  samples.reaches(2);  // the first of them is there to be reported then
  listeners::ApplicationListener application(*storage.databases, observer,
                                             storage.webUpdateReporter);
  storage.webUpdateReporter.counts = {1, 1};
  application.onApplicationStarted({{text}});
  application.onApplicationCrashed({{text}, 1});
  application.onApplicationAsserted({{text}, {}});
  application.onApplicationAsserted({{text}, {"message", "function", "file", 1, {}}});
  application.onApplicationStopped({{text}});
}

/// What the client and the storage report of themselves when they fail.
void reportFailures(CipDatabases& databases) {
  using Area = CipInfoItem::Area;
  using Severity = CipInfoItem::Severity;
  for (const auto& item : {CipInfoItem(Area::Database, Severity::CriticalLarge),
                           CipInfoItem(Area::InsertingItems, Severity::CriticalLarge, "message"),
                           CipInfoItem(Area::SendingItems, Severity::Exception, "message")}) {
    databases.insert(std::make_unique<CipInfoItem>(item), CipDatabaseClientInterface::Items);
  }
}

}  // namespace

std::vector<std::string> producedEvents() {
  MemoryStorage storage;
  auto& databases = storage.initialized();
  workWithActionsAndCommands(databases);
  workWithProjects(databases);
  workWithIssues(databases);
  startCrashAndStop(storage);
  reportFailures(databases);
  databases.join();
  return storage.support->texts(CipDatabaseClientInterface::Items);
}

std::vector<std::string> eventsOfAllClasses() {
  std::vector<std::string> events;
  const auto note = [&](const BaseEventItem& item) { events.push_back(item.toJson()); };
  const auto noteFilled = [&](BaseEventItemWithDetail&& item) {
    item.addDetail(hostsKeys, text);
    note(item);
  };
  note(CrashReportItem(text));
  note(UserInfoItem());
  note(UserLocationItem());
  note(WebUpdateItem(1, 1));
  note(GeneralEventItem(std::make_shared<HostsEvent>()));
  note(GeneralEventItem(nullptr));
  for (std::uint32_t kind = 0; kind < moreThanAnyEnumerationNames; ++kind) {
    note(ActionItem(ActionArea{kind}, text, hostsDetails));
    note(ApplicationItem(text, ApplicationItem::Type{kind}, 1));
    note(BimFileItem(text, FocusKind{kind}));
    note(BimModelItem(text, FocusKind{kind}));
    note(PresentationItem(text, FocusKind{kind}));
    note(CommandItem(text, CommandItem::State{kind}, hostsDetails));
    noteFilled(ProjectItem(ProjectItem::Event{kind}, text));
    noteFilled(IssueListStorageEvent(IssueListStorageEvent::Change{kind}));
    for (std::uint32_t other = 0; other < moreThanAnyEnumerationNames; ++other) {
      for (const char* message : {"", "message"}) {
        note(CipInfoItem(CipInfoItem::Area{kind}, CipInfoItem::Severity{other}, message));
      }
      noteFilled(MemoryUsageItem(MemoryUsageItem::Scope{kind}, MemoryUsageItem::Phase{other}));
      noteFilled(IssueListUserActionEvent(IssueListUserActionEvent::List{kind},
                                          IssueListUserActionEvent::Control{other}));
    }
  }
  return events;
}

}  // namespace qel::test
