#include <gmock/gmock.h>

#include "Application/Log/Analytics/SystemEnvironment/SystemEnvironment.h"
#include "host/QelPlatformWindows/SystemInformation.h"

namespace {

using testing::IsEmpty;

TEST(SystemEnvironmentTest, KnowsTheUserAndNothingElse) {
  const qel::log::analytics::systemenvironment::SystemEnvironment environment;
  EXPECT_EQ(environment.getCurrentUser(), qel::platform::windows::SystemInformation::getUserName());
  EXPECT_THAT(environment.getIpAddresses(), IsEmpty());
  EXPECT_THAT(environment.getScreenResolution(), IsEmpty());
  const auto& os = environment.getOS();
  EXPECT_THAT(os.name + os.bitness + os.language + os.buildNumber, IsEmpty());
  const auto& hardware = environment.getHardware();
  EXPECT_THAT(hardware.cpu + hardware.memory, IsEmpty());
  EXPECT_THAT(hardware.graphicCards, IsEmpty());
  EXPECT_THAT(environment.getInstalledApplications(), IsEmpty());
  EXPECT_THAT(environment.getApplicationConfigurationFiles(), IsEmpty());
}

}  // namespace
