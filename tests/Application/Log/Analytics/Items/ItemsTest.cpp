// The process's ids can be set once, so each of these tests needs a process of its own. What each
// kind of event records is tested with the whole sample session and in tests/docs.

#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "Application/Log/Analytics/Items/MemoryUsageItem.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"
#include "Application/Log/Analytics/Items/UserItems.h"
#include "Application/Log/Analytics/SystemEnvironment/ThisMachine.h"
#include "host/QelPlatformWindows/SystemInformation.h"
#include "tests/support/Files.h"
#include "tests/support/StoredEvent.h"

namespace qel::log::analytics::items {

using datetime::DateTime;
using details::QelEnvironmentInfo;
using test::summaryOf;

TEST(BaseEventItemTest, RendersItsMembersInFixedOrderWithTheIdsThatWereSetFirst) {
  for (const char* id : {"", "inst \"7\"", "second"}) {
    BaseItem::setInstallationId(id);
  }
  const auto session = Guid::parse("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0");
  for (const auto& id : {Guid(), session, Guid::create()}) {
    BaseItem::setSessionId(id);
  }
  ProjectItem full(ProjectItem::Event::Opened, "Depot");
  full.addDetail("b", "2");
  full.addDetail("a", "1");
  const ProjectItem sparse(ProjectItem::Event{3}, "");
  const auto origin = [](const BaseItem& item) {
    return R"(, "InstallationId": "inst \"7\"", "SessionId": )"
           R"("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0", "Timestamp": ")" +
           item.getDateTimeAsString() + '"';
  };
  EXPECT_EQ(full.toJson(), R"({"Category": "Project", "Subcategory": "Opened", "Event": "Depot")" +
                               origin(full) + R"(, "Details": {"a": "1", "b": "2"}})");
  EXPECT_EQ(sparse.toJson(), R"({"Category": "Project")" + origin(sparse) + '}');
}

TEST(BaseEventItemTest, RendersTheDetailsThatADerivedClassReturns) {
  class Renamed : public ProjectItem {
   public:
    using ProjectItem::ProjectItem;
    std::map<std::string, std::string> getDetails() const override { return {{"b", "changed"}}; }
  };
  Renamed item(ProjectItem::Event::Opened, "Depot");
  item.addDetail("b", "2");
  EXPECT_EQ(summaryOf(item.toJson()), "Project|Opened|Depot|b=changed");
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
                               {DateTime(-1.5), 18446744073709551615U}});
  item.addDetailedMemoryUsage({{DateTime(45000.25), 700}, {DateTime(45010), 800}});
  EXPECT_EQ(summaryOf(item.toJson()),
            "MemoryUsage|Total|Runtime|-1=18446744073709551615;"
            "45000=100;45002=300;45010=800;Min=7");
}

/// In the file, "*" stands for the keys that a host chooses and for the time.
TEST(EnvironmentItemTest, RendersAllMembersInFixedOrderAndTheFirstCurrentApplication) {
  const details::ApplicationInfo cad{"CAD", "6.1", "6.1.0.4", "2026-11-02", "Release", "de", "64"};
  const details::ApplicationInfo viewer{"Viewer", "", "", "", "", "", ""};
  const EnvironmentItem item(
      details::OsEnvironmentInfo("OS 11", "64", "de-DE", "22631", true, "2560x1440", 96, "31.0"),
      details::HardwareEnvironmentInfo("8 cores", "GPU", {{"*", "32"}}),
      {QelEnvironmentInfo(viewer, false, "", {}, {}, {}),
       QelEnvironmentInfo(cad, true, "on", {"a.usr", "b.usr"}, {{"*", "x=1"}}, {{"*", "plan"}}),
       QelEnvironmentInfo(viewer, true, "", {}, {}, {})},
      true);
  auto expected = test::contentOf(QEL_SOURCE_DIR "/tests/docs/environment.json");
  const std::string time = R"("Timestamp": ")";
  expected.replace(expected.find(time) + time.size(), 1, item.getDateTimeAsString());
  EXPECT_EQ(item.toJson() + '\n', expected);
}

TEST(ThisMachineTest, FillsOnlyTheEmptyMembersOfTheProgram) {
  details::ApplicationInfo given{"CAD", "6.1", "", "", "", "xx", ""};
  const auto machine = systemenvironment::describeThisMachine(given);
  const auto& program = machine->getQelEnvironmentInfo().at(0).application();
  EXPECT_EQ(program.name + program.version + program.exeVersion + program.language, "CAD6.1xx");
  EXPECT_EQ(program.bitness, machine->getOsEnvironmentInfo().getBitness());
  EXPECT_EQ(program.exeDate.back(), 'Z');
}

TEST(ItemWrapperTest, JoinsTheRowsOfATable) {
  const std::string a = R"({"a":1})";
  const std::vector<const std::string*> rows[] = {{nullptr, &a, nullptr, &a}, {}, {&a}};
  const ItemWrapper package(rows[0], CipDatabaseClientInterface::Items);
  EXPECT_EQ(package.toJson(), R"({"version": "3.1", "events": [{"a":1},{"a":1}]})");
  EXPECT_FALSE(package.isNullOrEmpty());
  EXPECT_TRUE(ItemWrapper(rows[1], CipDatabaseClientInterface::Items).isNullOrEmpty());
  const ItemWrapper ofNoTable(rows[2], CipDatabaseClientInterface::Table(2));
  EXPECT_EQ(ofNoTable.toJson(), R"({"version": "3.1"})");
}

}  // namespace qel::log::analytics::items
