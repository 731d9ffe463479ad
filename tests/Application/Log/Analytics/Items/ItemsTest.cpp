// The installation and session id are the process's and stick: these tests rely on having a process
// each. What each kind of event tells is tested with docs/events.md and the whole sample session.

#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "Application/Log/Analytics/Items/GeneralEventItem.h"
#include "Application/Log/Analytics/Items/IssueListStorageEvent.h"
#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "Application/Log/Analytics/Items/MemoryUsageItem.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"
#include "Application/Log/Analytics/Items/UserInfoItem.h"
#include "host/QelPlatformWindows/SystemInformation.h"
#include "tests/support/StoredEvent.h"

namespace qel::log::analytics::items {
namespace {

using datetime::DateTime;
using details::QelEnvironmentInfo;
using test::summaryOf;

TEST(BaseEventItemTest, RendersTheEnvelopeInFixedOrderWithTheIdsThatWereSetFirst) {
  const auto session = Guid::parse("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0");
  for (const char* id : {"", "inst \"7\"", "second"}) {
    BaseItem::setInstallationId(id);
  }
  for (const auto& id : {Guid(), session, Guid::create()}) {
    BaseItem::setSessionId(id);
  }
  ProjectItem full(ProjectItem::Event::Opened, "Depot");
  full.addDetail("b", "2");
  full.addDetail("a", "1");
  const std::string ids =
      R"(, "InstallationId": "inst \"7\"", "SessionId": "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0", )";
  EXPECT_EQ(full.toJson(), R"({"Category": "Project", "Subcategory": "Opened", "Event": "Depot")" +
                               ids + R"("Timestamp": ")" + full.getDateTimeAsString() +
                               R"(", "Details": {"a": "1", "b": "2"}})");
  const ProjectItem sparse(ProjectItem::Event{3}, "");
  EXPECT_EQ(sparse.toJson(), R"({"Category": "Project")" + ids + R"("Timestamp": ")" +
                                 sparse.getDateTimeAsString() + "\"}");
}

TEST(BaseEventItemTest, DetailsAreCopiedAndTheFirstOfAKeyCounts) {
  IssueListStorageEvent added(IssueListStorageEvent::Change::Added);
  added.addDetail("Priority", "2");
  added.addDetail("Priority", "3");
  IssueListStorageEvent removed = added;
  removed.setChange(IssueListStorageEvent::Change::Removed);
  EXPECT_EQ(summaryOf(removed.toJson()), "IssueListStorage|Issue|Removed|Priority=2");
  EXPECT_EQ(summaryOf(added.toJson()), "IssueListStorage|Issue|Added|Priority=2");
}

TEST(GeneralEventItemTest, TellsNothingWithoutAnEvent) {
  EXPECT_EQ(summaryOf(GeneralEventItem(nullptr).toJson()), "|||");
}

TEST(UserInfoItemTest, TellsTheLoginName) {
  EXPECT_EQ(summaryOf(UserInfoItem().toJson()),
            "User|||Username=" + platform::windows::SystemInformation::getUserName());
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
  EXPECT_EQ(summaryOf(item.toJson()),
            "MemoryUsage|Total|Runtime|-0=500;-1=18446744073709551615;10000000000000000000000=600;"
            "45000=100;45002=300;45010=800;999=0;Min=7");
}

QelEnvironmentInfo application(const std::string& name, bool isCurrent) {
  return {{name, "", "", "", "", "", ""}, isCurrent, "", {}, {}, {}};
}

TEST(EnvironmentItemTest, RendersAllMembersInFixedOrder) {
  const details::ApplicationInfo cad{"CAD", "6.1", "6.1.0.4", "2026-11-02", "Release", "de", "64"};
  const EnvironmentItem item(
      details::OsEnvironmentInfo("OS 11", "64", "de-DE", "22631", true, "2560x1440", 96, "31.0"),
      details::HardwareEnvironmentInfo("8 cores", "GPU", {{"Total", "32"}, {"Free", "8"}}),
      {QelEnvironmentInfo(cad, true, "on", {"a.usr", "b.usr"}, {{"cad.ini", "x=1"}},
                          {{"-mode", "plan"}}),
       application("Viewer", false)},
      true);
  EXPECT_EQ(
      item.toJson(),
      R"({"InstallationId": "", "SessionId": "00000000-0000-0000-0000-000000000000", )"
      R"("Timestamp": ")" +
          item.getDateTimeAsString() +
          R"(", "IsInternal": true, "CurrentActiveApplication": {"Name": "CAD", "Version": "6.1", )"
          R"("ExeVersion": "6.1.0.4", "ExeDate": "2026-11-02", "ExeConfig": "Release", )"
          R"("Language": "de", "Bitness": "64"}, )"
          R"("OS": {"Name": "OS 11", "Bitness": "64", "Language": "de-DE", )"
          R"("BuildNumber": "22631", "IsTerminalServer": true, "ScreenResolution": "2560x1440", )"
          R"("ScreenDPI": 96.0, "GraphicCardDriver": "31.0"}, )"
          R"("Hardware": {"GraphicCard": "GPU", "CPU": "8 cores", )"
          R"("Memory": {"Free": "8", "Total": "32"}}, )"
          R"("InstalledApplications": [{"Name": "CAD", "Version": "6.1", )"
          R"("ExeVersion": "6.1.0.4", "ExeDate": "2026-11-02", "ExeConfig": "Release", )"
          R"("Language": "de", "Bitness": "64", "WebUpdate": "on", "UserFiles": ["a.usr", "b.usr"], )"
          R"("IniFiles": {"cad.ini": "x=1"}, "StartSettings": {"-mode": "plan"}}, )"
          R"({"Name": "Viewer", "Version": "", "ExeVersion": "", "ExeDate": "", "ExeConfig": "", )"
          R"("Language": "", "Bitness": "", "WebUpdate": "", "UserFiles": [], "IniFiles": {}, )"
          R"("StartSettings": {}}]})");
}

TEST(EnvironmentItemTest, TheFirstCurrentApplicationIsTheActiveOne) {
  const std::pair<std::vector<QelEnvironmentInfo>, std::string> cases[] = {
      {{}, ""},
      {{application("A", false)}, ""},
      {{application("A", false), application("B", true), application("C", true)}, "B"}};
  for (const auto& [applications, active] : cases) {
    const EnvironmentItem item({"", "", "", "", false, "", 0, ""}, {}, applications, false);
    const std::string part =
        R"("IsInternal": false, "CurrentActiveApplication": {"Name": ")" + active + R"(", )";
    EXPECT_NE(item.toJson().find(part), std::string::npos) << item.toJson();
  }
}

TEST(ItemWrapperTest, JoinsTheRowsOfATable) {
  const std::string a = R"({"a":1})";
  const std::string b = R"({"b":2})";
  const std::vector<const std::string*> some{&a};
  const struct {
    std::vector<const std::string*> rows;
    int table;
    std::string text;
    bool isNullOrEmpty;
  } cases[] = {
      {{nullptr, &a, nullptr, &b}, 1, R"({"version": "3.1", "events": [{"a":1},{"b":2}]})", false},
      {{&a, &b}, 0, R"({"version": "3.1", "environments": [{"a":1},{"b":2}]})", false},
      {{nullptr, nullptr}, 1, R"({"version": "3.1", "events": []})", false},
      {{}, 1, R"({"version": "3.1"})", true},
      {{&a}, 2, R"({"version": "3.1"})", false},
  };
  for (const auto& [rows, table, text, isNullOrEmpty] : cases) {
    const ItemWrapper package(rows, static_cast<CipDatabaseClientInterface::Table>(table));
    EXPECT_EQ(package.toJson(), text);
    EXPECT_EQ(package.isNullOrEmpty(), isNullOrEmpty) << text;
    std::ostringstream merged;
    package.mergeList(rows, merged);
    EXPECT_TRUE(text.find(merged.str()) != std::string::npos || table == 2) << merged.str();
    ItemWrapper target(some, CipDatabaseClientInterface::Items);
    target = package;
    EXPECT_EQ(target.toJson(), R"({"version": "3.1", "events": [{"a":1}]})")
        << "an assignment leaves the target as it was";
  }
}

}  // namespace
}  // namespace qel::log::analytics::items
