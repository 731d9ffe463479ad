#include <vector>

#include <gtest/gtest.h>

#include "host/QelPlatformWindows/SystemInformation.h"

namespace qel::platform::windows {
namespace {

TEST(SystemInformationTest, MemoryOfTheProcessIsWhatItTouchedNotWhatItReserved) {
  const auto used = [] {
    return static_cast<double>(SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB());
  };
  constexpr std::size_t size = 65'536;
  const double before = used();
  std::vector<char> memory;
  memory.reserve(size * 1024);
  EXPECT_NEAR(used() - before, 0, size / 4.0);
  memory.resize(size * 1024, '\1');
  EXPECT_GT(used() - before, size * 0.75);  // a sanitizer's own memory comes on top
  EXPECT_GT(SystemInformation::getUsedPhysicalMemoryOfSystemInKB(), size);
}

}  // namespace
}  // namespace qel::platform::windows
