#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include "host/QelPlatformWindows/SystemInformation.h"
#include "host/QelUtilities/Exception.h"

namespace qel::platform::windows {
namespace {

/// What a program prints, without its last line's end.
std::string outputOf(const char* command) {
  FILE* const pipe = popen(command, "r");
  std::string output;
  for (int character = fgetc(pipe); character != EOF && character != '\n';
       character = fgetc(pipe)) {
    output += static_cast<char>(character);
  }
  pclose(pipe);
  return output;
}

TEST(SystemInformationTest, TellsTheUsersName) {
  EXPECT_EQ(SystemInformation::getUserName(), outputOf("id -un"));
}

TEST(SystemInformationTest, AUserWithoutAnAccountIsAnError) {
  if (getuid() != 0) {
    GTEST_SKIP() << "only root can become another user";
  }
  const auto askAsNobodyKnown = [] {
    if (setuid(3'999'999'999) != 0) {
      std::_Exit(2);
    }
    try {
      SystemInformation::getUserName();
      std::_Exit(3);
    } catch (const qel::exception& error) {
      std::cerr << error.what();
      std::_Exit(0);
    }
  };
  EXPECT_EXIT(askAsNobodyKnown(), testing::ExitedWithCode(0), "user 3999999999 has no account");
}

TEST(SystemInformationTest, MemoryOfTheProcessIsWhatItTouchedNotWhatItReserved) {
  const auto used = [] {
    return static_cast<double>(SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB());
  };
  constexpr std::size_t size = 65'536;
  const double before = used();
  EXPECT_GT(before, 0);
  std::vector<char> memory;
  memory.reserve(size * 1024);
  EXPECT_NEAR(used() - before, 0, size / 4.0);
  memory.resize(size * 1024, '\1');
  EXPECT_NEAR(used() - before, size, size / 4.0);
}

TEST(SystemInformationTest, MemoryOfTheSystemIsPartOfAllThereIs) {
  struct sysinfo system {};
  ASSERT_EQ(sysinfo(&system), 0);
  const std::uint64_t used = SystemInformation::getUsedPhysicalMemoryOfSystemInKB();
  EXPECT_GT(used, 1024U);
  EXPECT_LT(used, std::uint64_t{system.totalram} * system.mem_unit / 1024);
}

}  // namespace
}  // namespace qel::platform::windows
