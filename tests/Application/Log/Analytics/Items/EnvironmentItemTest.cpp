#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"

namespace qel::log::analytics::items {
namespace {

using details::ApplicationInfo;
using details::HardwareEnvironmentInfo;
using details::OsEnvironmentInfo;
using details::QelEnvironmentInfo;

constexpr bool internal = true;
constexpr bool current = true;
constexpr bool terminalServer = true;

QelEnvironmentInfo application(const std::string& name, bool isCurrent) {
  return {ApplicationInfo{name, "", "", "", "", "", ""}, isCurrent, "", {}, {}, {}};
}

TEST(EnvironmentItemTest, RendersAllMembersInFixedOrder) {
  const ApplicationInfo cad{"CAD", "6.1", "6.1.0.4", "2026-11-02", "Release", "de", "64"};
  const EnvironmentItem item(
      OsEnvironmentInfo("OS 11", "64", "de-DE", "22631", terminalServer, "2560x1440", 96, "31.0"),
      HardwareEnvironmentInfo("8 cores", "GPU", {{"Total", "32"}, {"Free", "8"}}),
      {QelEnvironmentInfo(cad, current, "on", {"a.usr", "b.usr"}, {{"cad.ini", "x=1"}},
                          {{"-mode", "plan"}}),
       application("Viewer", !current)},
      internal);
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
      {{application("A", !current)}, ""},
      {{application("A", !current), application("B", current), application("C", current)}, "B"}};
  const OsEnvironmentInfo unknown("", "", "", "", !terminalServer, "", 0, "");
  for (const auto& [applications, active] : cases) {
    const EnvironmentItem item(unknown, {}, applications, !internal);
    const std::string part =
        R"("IsInternal": false, "CurrentActiveApplication": {"Name": ")" + active + R"(", )";
    EXPECT_NE(item.toJson().find(part), std::string::npos) << item.toJson();
  }
}

}  // namespace
}  // namespace qel::log::analytics::items
