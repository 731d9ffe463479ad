// The installation and session id are the process's and stick: these tests rely on having a process
// each.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"

namespace qel::log::analytics::items {
namespace {

using namespace std::string_literals;

TEST(BaseItemTest, IsStampedWhenMadeAndAgainOnRequest) {
  const auto before = datetime::DateTime::now();
  CrashReportItem item("");
  const auto made = item.getTime();
  EXPECT_LE(before, made);
  EXPECT_LE(made, datetime::DateTime::now());

  while (datetime::DateTime::now() <= made) {
  }
  EXPECT_EQ(item.getTime(), made);
  item.updateTimestamp();
  EXPECT_LT(made, item.getTime());
}

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

TEST(BaseEventItemTest, HostileTextsCannotLeaveTheirMembers) {
  const std::string hostile = "\", \"SessionId\": \"x\\\n\0\xFF"s;
  const std::string repaired = "\", \"SessionId\": \"x\\\n\0\xEF\xBF\xBD"s;
  const CommandItem item(hostile, CommandItem::State::Started, {{hostile, hostile}});
  const auto json = nlohmann::json::parse(item.toJson());
  EXPECT_EQ(json.size(), 7U);
  EXPECT_EQ(json["Event"], repaired);
  EXPECT_EQ(json["SessionId"], "00000000-0000-0000-0000-000000000000");
  EXPECT_EQ(json["Details"], nlohmann::json({{repaired, repaired}}));
}

}  // namespace
}  // namespace qel::log::analytics::items
