#include <filesystem>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

// This program links nothing of the library, so that only the plug-in loads it.
namespace qel::test {
namespace {

TEST(PlugInTest, CanBeUnloadedAndLoadedAgainWhileTheLibraryStillWorks) {
  const TemporaryDirectory directory;
  testing::internal::CaptureStderr();  // nobody accepts what the sessions send
  for (int load = 1; load <= 4; ++load) {
    const auto ofThisLoad = directory.path() / std::to_string(load);
    std::filesystem::create_directory(ofThisLoad);
    void* const plugIn = dlopen(QEL_PLUG_IN, RTLD_NOW);
    ASSERT_NE(plugIn, nullptr) << dlerror();
    const auto runSession = reinterpret_cast<int (*)(const char*)>(dlsym(plugIn, "runSession"));
    ASSERT_NE(runSession, nullptr) << dlerror();
    EXPECT_GT(runSession(ofThisLoad.c_str()), 0);
    EXPECT_EQ(dlclose(plugIn), 0);
    EXPECT_EQ(dlopen(QEL_PLUG_IN, RTLD_NOW | RTLD_NOLOAD), nullptr);
    void* const library = dlopen(QEL_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    dlclose(library);
  }
  testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace qel::test
