#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/ActionItem.h"
#include "Application/Log/Analytics/Items/ApplicationItem.h"
#include "Application/Log/Analytics/Items/BimFileItem.h"
#include "Application/Log/Analytics/Items/BimModelItem.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "Application/Log/Analytics/Items/GeneralEventItem.h"
#include "Application/Log/Analytics/Items/IssueListStorageEvent.h"
#include "Application/Log/Analytics/Items/IssueListUserActionEvent.h"
#include "Application/Log/Analytics/Items/MemoryUsageItem.h"
#include "Application/Log/Analytics/Items/PresentationItem.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"
#include "Application/Log/Analytics/Items/SaveItem.h"
#include "Application/Log/Analytics/Items/UserInfoItem.h"
#include "Application/Log/Analytics/Items/UserLocationItem.h"
#include "Application/Log/Analytics/Items/WebUpdateItem.h"
#include "host/QelPlatformWindows/SystemInformation.h"
#include "tests/support/StoredEvent.h"

namespace qel::log::analytics::items {
namespace {

using datetime::DateTime;
using Details = std::map<std::string, std::string>;

/// What an item that is made of these arguments tells. The numbers from which the enumerators below
/// are made are those that the host sends.
template <typename Item, typename... Arguments>
std::string told(const Arguments&... arguments) {
  return test::summaryOf(Item(arguments...).toJson());
}

TEST(ItemCatalogueTest, Actions) {
  const Details details{{"a", "1"}};
  EXPECT_EQ(told<ActionItem>(ActionArea{0}, "Open", details), "BCF|Action|Open|a=1");
  EXPECT_EQ(told<ActionItem>(ActionArea{1}, "Open", details), "Help|Action|Open|a=1");
  EXPECT_EQ(told<ActionItem>(ActionArea{2}, "Open", details), "Start Page|Action|Open|a=1");
  EXPECT_EQ(told<ActionItem>(ActionArea{3}, "Open", details), "Project Manager|Action|Open|a=1");
  EXPECT_EQ(told<ActionItem>(ActionArea{4}, "Open", details), "Graphic|Action|Open|a=1");
  EXPECT_EQ(told<ActionItem>(ActionArea{5}, "Open", details), "Unknown|Action|Open|a=1");
  EXPECT_EQ(told<ActionItem>(ActionArea{0xFFFFFFFF}, "Open", Details{}), "Unknown|Action|Open|");
}

TEST(ItemCatalogueTest, Application) {
  using Type = ApplicationItem::Type;
  const std::string code = "Exception Code=";
  EXPECT_EQ(told<ApplicationItem>("6.1", Type{0}, 0), "Application|Started|6.1|" + code + "0");
  EXPECT_EQ(told<ApplicationItem>("6.1", Type{1}, 0), "Application|Stopped|6.1|" + code + "0");
  EXPECT_EQ(told<ApplicationItem>("6.1", Type{2}, -1073741819),
            "Application|Crashed|6.1|" + code + "3221225477");
  EXPECT_EQ(told<ApplicationItem>("6.1", Type{3}, 7), "Application|Asserted|6.1|" + code + "7");
  EXPECT_EQ(told<ApplicationItem>("6.1", Type{4}, -1), "Application||6.1|" + code + "4294967295");
  EXPECT_EQ(told<ApplicationItem>("6.1", assert::AssertInfo{"", "", "", 0, assert::AssertType{2}}),
            "Application|Asserted|6.1|Line Number=0;Type=Postcondition");
  EXPECT_EQ(told<ApplicationItem>("6.1", assert::AssertInfo{"", "", "", 0, assert::AssertType{3}}),
            "Application|Asserted|6.1|Line Number=0;Type=Invariant");
  EXPECT_EQ(told<CrashReportItem>("sent"), "Application|Crash Report|sent|");
}

TEST(ItemCatalogueTest, CommandsFilesAndProjects) {
  const Details id{{"ID", "17"}};
  EXPECT_EQ(told<CommandItem>("Wall", CommandItem::State{0}, id), "Command|Started|Wall|ID=17");
  EXPECT_EQ(told<CommandItem>("Wall", CommandItem::State{1}, id), "Command|Accepted|Wall|ID=17");
  EXPECT_EQ(told<CommandItem>("Wall", CommandItem::State{2}, id), "Command|Cancelled|Wall|ID=17");
  EXPECT_EQ(told<CommandItem>("Wall", CommandItem::State{3}, id), "Command||Wall|ID=17");
  EXPECT_EQ(told<BimFileItem>("wing", FocusKind{0}), "BimFile|Focused|wing|");
  EXPECT_EQ(told<BimFileItem>("wing", FocusKind{1}), "BimFile|Unfocused|wing|");
  EXPECT_EQ(told<BimFileItem>("wing", FocusKind{2}), "BimFile||wing|");
  EXPECT_EQ(told<BimModelItem>("wing", FocusKind{0}), "BimModel|Focused|wing|");
  EXPECT_EQ(told<PresentationItem>("wing", FocusKind{1}), "Presentation|Unfocused|wing|");
  EXPECT_EQ(told<ProjectItem>(ProjectItem::Event{0}, "Depot"), "Project|Opened|Depot|");
  EXPECT_EQ(told<ProjectItem>(ProjectItem::Event{1}, "Depot"), "Project|Closed|Depot|");
  EXPECT_EQ(told<ProjectItem>(ProjectItem::Event{2}, "Depot"), "Project|Restored|Depot|");
  EXPECT_EQ(told<ProjectItem>(ProjectItem::Event{3}, "Depot"), "Project||Depot|");
  EXPECT_EQ(told<SaveItem>("SaveFile", "AutoSave"), "Save|SaveFile|AutoSave|");
}

TEST(ItemCatalogueTest, IssueList) {
  using Change = IssueListStorageEvent::Change;
  using Action = IssueListUserActionEvent;
  const std::string action = "IssueListAction|";
  EXPECT_EQ(told<IssueListStorageEvent>(Change{0}), "IssueListStorage|Issue|Added|");
  EXPECT_EQ(told<IssueListStorageEvent>(Change{1}), "IssueListStorage|Issue|Removed|");
  EXPECT_EQ(told<IssueListStorageEvent>(Change{2}), "IssueListStorage|Issue|RemovedAll|");
  EXPECT_EQ(told<IssueListStorageEvent>(Change{3}), "IssueListStorage|Issue|Unknown|");
  EXPECT_EQ(told<Action>(Action::List{0}, Action::Control{0}), action + "Issue|ContextMenu|");
  EXPECT_EQ(told<Action>(Action::List{1}, Action::Control{1}),
            action + "Collision|UnreadIssuesNavigator|");
  EXPECT_EQ(told<Action>(Action::List{2}, Action::Control{2}), action + "Unknown|SearchFilter|");
  EXPECT_EQ(told<Action>(Action::List{0}, Action::Control{3}), action + "Issue|FilterState|");
  EXPECT_EQ(told<Action>(Action::List{0}, Action::Control{4}),
            action + "Issue|NotificationDialog|");
  EXPECT_EQ(told<Action>(Action::List{0}, Action::Control{5}), action + "Issue|Unknown|");
}

TEST(ItemCatalogueTest, UserMachineAndClientItself) {
  using Info = CipInfoItem;
  using Memory = MemoryUsageItem;
  EXPECT_EQ(told<UserInfoItem>(),
            "User|||Username=" + platform::windows::SystemInformation::getUserName());
  EXPECT_EQ(told<UserLocationItem>(),
            "User|Location||set-on-backend=3F0A9C12-7B4E-4D21-9E6A-5C8B2D7F1A04");
  EXPECT_EQ(told<WebUpdateItem>(0U, 18446744073709551615U),
            "WebUpdate|Reports||corrupt package=18446744073709551615;success=0");
  EXPECT_EQ(told<Memory>(Memory::Scope{0}, Memory::Phase{0}), "MemoryUsage|Total|Runtime|");
  EXPECT_EQ(told<Memory>(Memory::Scope{1}, Memory::Phase{1}), "MemoryUsage|Application|Crashed|");
  EXPECT_EQ(told<Memory>(Memory::Scope{2}, Memory::Phase{2}), "MemoryUsage|||");
  EXPECT_EQ(told<Info>(Info::Area{0}, Info::Severity{0}), "CIP|Database|CriticalLarge|");
  EXPECT_EQ(told<Info>(Info::Area{1}, Info::Severity{1}, "no route"),
            "CIP|SendingItems|Exception|Message=no route");
  EXPECT_EQ(told<Info>(Info::Area{2}, Info::Severity{1}), "CIP|InsertingItems|Exception|");
  EXPECT_EQ(told<Info>(Info::Area{3}, Info::Severity{2}), "CIP|||");
  EXPECT_EQ(told<GeneralEventItem>(nullptr), "|||");
}

TEST(ItemCatalogueTest, ACopyReportsALaterChangeWithTheSameDetailsOfWhichTheFirstCount) {
  IssueListStorageEvent added(IssueListStorageEvent::Change::Added);
  added.addDetail("Priority", "2");
  added.addDetail("Priority", "3");
  IssueListStorageEvent removed = added;
  removed.setChange(IssueListStorageEvent::Change::Removed);
  EXPECT_EQ(test::summaryOf(removed.toJson()), "IssueListStorage|Issue|Removed|Priority=2");
  EXPECT_EQ(test::summaryOf(added.toJson()), "IssueListStorage|Issue|Added|Priority=2");
}

TEST(MemoryUsageItemTest, NamesReadingsByTheirSecondAndKeepsTheFirstOfEach) {
  MemoryUsageItem item(MemoryUsageItem::Scope::Total, MemoryUsageItem::Phase::Runtime);
  item.addDetail("Min", "7");
  item.addDetailedMemoryUsage({{DateTime(45000.25), 100},
                               {DateTime(45000.75), 200},
                               {DateTime(45001.9999999), 300},  // is printed as 45002.000000
                               {DateTime(45002.5), 400},
                               {DateTime(999), 0},
                               {DateTime(-0.25), 500},
                               {DateTime(-1.5), 18446744073709551615U},
                               {DateTime(1e22), 600}});
  item.addDetailedMemoryUsage({{DateTime(999), 700}, {DateTime(45010), 800}});
  EXPECT_EQ(item.getDetails(), (Details{{"-0", "500"},
                                        {"-1", "18446744073709551615"},
                                        {"10000000000000000000000", "600"},
                                        {"45000", "100"},
                                        {"45002", "300"},
                                        {"45010", "800"},
                                        {"999", "0"},
                                        {"Min", "7"}}));
}

}  // namespace
}  // namespace qel::log::analytics::items
