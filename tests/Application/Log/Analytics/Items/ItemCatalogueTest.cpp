#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/ActionItem.h"
#include "Application/Log/Analytics/Items/ApplicationItem.h"
#include "Application/Log/Analytics/Items/BimFileItem.h"
#include "Application/Log/Analytics/Items/BimModelItem.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
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

namespace qel::log::analytics::items {
namespace {

using Details = std::map<std::string, std::string>;

/// What one item tells. The numbers from which the items are made are those that the host sends.
struct Entry {
  std::shared_ptr<const EventInterface> item;
  std::string category;
  std::string subCategory;
  std::string event;
  Details details = {};
};

void expectEntries(const std::vector<Entry>& entries) {
  for (const auto& [item, category, subCategory, event, details] : entries) {
    SCOPED_TRACE(testing::Message() << category << '/' << subCategory << '/' << event);
    EXPECT_EQ(item->getCategory(), category);
    EXPECT_EQ(item->getSubCategory(), subCategory);
    EXPECT_EQ(item->getEvent(), event);
    EXPECT_EQ(item->getDetails(), details);
  }
}

/// Of an enumeration's type, whether it names the value or not.
template <typename Enumeration>
Enumeration numbered(std::uint32_t value) {
  return static_cast<Enumeration>(value);
}

constexpr std::uint32_t largest = 0xFFFFFFFF;

std::shared_ptr<EventInterface> action(std::uint32_t area) {
  return std::make_shared<ActionItem>(numbered<ActionArea>(area), "Open", Details{{"a", "1"}});
}

TEST(ItemCatalogueTest, Actions) {
  expectEntries({{action(0), "BCF", "Action", "Open", {{"a", "1"}}},
                 {action(1), "Help", "Action", "Open", {{"a", "1"}}},
                 {action(2), "Start Page", "Action", "Open", {{"a", "1"}}},
                 {action(3), "Project Manager", "Action", "Open", {{"a", "1"}}},
                 {action(4), "Graphic", "Action", "Open", {{"a", "1"}}},
                 {action(5), "Unknown", "Action", "Open", {{"a", "1"}}},
                 {action(largest), "Unknown", "Action", "Open", {{"a", "1"}}}});
}

std::shared_ptr<EventInterface> application(std::uint32_t type, int code) {
  return std::make_shared<ApplicationItem>("6.1", numbered<ApplicationItem::Type>(type), code);
}

TEST(ItemCatalogueTest, Application) {
  expectEntries(
      {{application(0, 0), "Application", "Started", "6.1", {{"Exception Code", "0"}}},
       {application(1, 0), "Application", "Stopped", "6.1", {{"Exception Code", "0"}}},
       {application(2, -1073741819),
        "Application",
        "Crashed",
        "6.1",
        {{"Exception Code", "3221225477"}}},
       {application(3, 7), "Application", "Asserted", "6.1", {{"Exception Code", "7"}}},
       {application(4, -1), "Application", "", "6.1", {{"Exception Code", "4294967295"}}},
       {std::make_shared<CrashReportItem>("sent"), "Application", "Crash Report", "sent"}});
}

TEST(ItemCatalogueTest, FailedAssertions) {
  const assert::AssertInfo full{"count == 1", "qel::f", "Core/F", 42,
                                assert::AssertType::Postcondition};
  assert::AssertInfo bare;
  bare.line = -5;
  expectEntries({{std::make_shared<ApplicationItem>("6.1", full),
                  "Application",
                  "Asserted",
                  "6.1",
                  {{"Type", "Postcondition"},
                   {"Message", "count == 1"},
                   {"Function Name", "qel::f"},
                   {"Filename", "Core/F"},
                   {"Line Number", "42"}}},
                 {std::make_shared<ApplicationItem>("6.1", bare),
                  "Application",
                  "Asserted",
                  "6.1",
                  {{"Type", "Assertion"}, {"Line Number", "-5"}}}});
}

template <typename Item>
std::shared_ptr<EventInterface> focus(std::uint32_t kind) {
  return std::make_shared<Item>("north wing", numbered<FocusKind>(kind));
}

TEST(ItemCatalogueTest, Focus) {
  expectEntries({{focus<BimFileItem>(0), "BimFile", "Focused", "north wing"},
                 {focus<BimFileItem>(1), "BimFile", "Unfocused", "north wing"},
                 {focus<BimFileItem>(2), "BimFile", "", "north wing"},
                 {focus<BimModelItem>(0), "BimModel", "Focused", "north wing"},
                 {focus<PresentationItem>(1), "Presentation", "Unfocused", "north wing"}});
}

std::shared_ptr<EventInterface> info(std::uint32_t area, std::uint32_t severity,
                                     const std::string& message = {}) {
  return std::make_shared<CipInfoItem>(numbered<CipInfoItem::Area>(area),
                                       numbered<CipInfoItem::Severity>(severity), message);
}

TEST(ItemCatalogueTest, ClientsOwnReports) {
  expectEntries(
      {{info(0, 0), "CIP", "Database", "CriticalLarge"},
       {info(1, 1, "no route"), "CIP", "SendingItems", "Exception", {{"Message", "no route"}}},
       {info(2, 1), "CIP", "InsertingItems", "Exception"},
       {info(3, 2), "CIP", "", ""}});
}

std::shared_ptr<EventInterface> command(std::uint32_t state) {
  return std::make_shared<CommandItem>("Wall", numbered<CommandItem::State>(state),
                                       Details{{"ID", "17"}});
}

std::shared_ptr<EventInterface> project(std::uint32_t event) {
  return std::make_shared<ProjectItem>(numbered<ProjectItem::Event>(event), "Depot");
}

TEST(ItemCatalogueTest, CommandsProjectsAndSaving) {
  expectEntries(
      {{command(0), "Command", "Started", "Wall", {{"ID", "17"}}},
       {command(1), "Command", "Accepted", "Wall", {{"ID", "17"}}},
       {command(2), "Command", "Cancelled", "Wall", {{"ID", "17"}}},
       {command(3), "Command", "", "Wall", {{"ID", "17"}}},
       {project(0), "Project", "Opened", "Depot"},
       {project(1), "Project", "Closed", "Depot"},
       {project(2), "Project", "Restored", "Depot"},
       {project(3), "Project", "", "Depot"},
       {std::make_shared<SaveItem>("SaveFile", "AutoSave"), "Save", "SaveFile", "AutoSave"}});
}

std::shared_ptr<EventInterface> storage(std::uint32_t change) {
  return std::make_shared<IssueListStorageEvent>(numbered<IssueListStorageEvent::Change>(change));
}

std::shared_ptr<EventInterface> userAction(std::uint32_t list, std::uint32_t control) {
  return std::make_shared<IssueListUserActionEvent>(
      numbered<IssueListUserActionEvent::List>(list),
      numbered<IssueListUserActionEvent::Control>(control));
}

TEST(ItemCatalogueTest, IssueList) {
  expectEntries({{storage(0), "IssueListStorage", "Issue", "Added"},
                 {storage(1), "IssueListStorage", "Issue", "Removed"},
                 {storage(2), "IssueListStorage", "Issue", "RemovedAll"},
                 {storage(3), "IssueListStorage", "Issue", "Unknown"},
                 {userAction(0, 0), "IssueListAction", "Issue", "ContextMenu"},
                 {userAction(1, 1), "IssueListAction", "Collision", "UnreadIssuesNavigator"},
                 {userAction(2, 2), "IssueListAction", "Unknown", "SearchFilter"},
                 {userAction(0, 3), "IssueListAction", "Issue", "FilterState"},
                 {userAction(0, 4), "IssueListAction", "Issue", "NotificationDialog"},
                 {userAction(0, 5), "IssueListAction", "Issue", "Unknown"}});
}

std::shared_ptr<EventInterface> memory(std::uint32_t scope, std::uint32_t phase) {
  return std::make_shared<MemoryUsageItem>(numbered<MemoryUsageItem::Scope>(scope),
                                           numbered<MemoryUsageItem::Phase>(phase));
}

TEST(ItemCatalogueTest, UserUpdatesAndMemory) {
  const std::string userName = platform::windows::SystemInformation::getUserName();
  expectEntries({{std::make_shared<UserInfoItem>(), "User", "", "", {{"Username", userName}}},
                 {std::make_shared<UserLocationItem>(),
                  "User",
                  "Location",
                  "",
                  {{"set-on-backend", "3F0A9C12-7B4E-4D21-9E6A-5C8B2D7F1A04"}}},
                 {std::make_shared<WebUpdateItem>(0, 18446744073709551615U),
                  "WebUpdate",
                  "Reports",
                  "",
                  {{"success", "0"}, {"corrupt package", "18446744073709551615"}}},
                 {memory(0, 0), "MemoryUsage", "Total", "Runtime"},
                 {memory(1, 1), "MemoryUsage", "Application", "Crashed"},
                 {memory(2, 2), "MemoryUsage", "", ""}});
}

}  // namespace
}  // namespace qel::log::analytics::items
