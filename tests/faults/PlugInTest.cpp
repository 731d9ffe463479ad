#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "tests/support/TemporaryDirectory.h"

// This program links nothing of the library, so that only the plug-in loads it.
namespace qel::test {
namespace {

using Function = int (*)(const char*);

#ifdef _WIN32

void* load(const std::filesystem::path& file) { return LoadLibraryW(file.c_str()); }
bool unload(void* plugIn) { return FreeLibrary(static_cast<HMODULE>(plugIn)) != 0; }
bool isLoaded(const std::filesystem::path& file) {
  return GetModuleHandleW(file.c_str()) != nullptr;
}
void* find(void* plugIn, const char* function) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(plugIn), function));
}

#else

void* load(const std::filesystem::path& file) { return dlopen(file.c_str(), RTLD_NOW); }
bool unload(void* plugIn) { return dlclose(plugIn) == 0; }
bool isLoaded(const std::filesystem::path& file) {
  void* const loaded = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  return loaded != nullptr && unload(loaded);
}
void* find(void* plugIn, const char* function) { return dlsym(plugIn, function); }

#endif

TEST(PlugInTest, CanBeUnloadedAndLoadedAgainWhileTheLibraryStillWorks) {
  const TemporaryDirectory directory;
  testing::internal::CaptureStderr();  // nobody accepts what the sessions send
  for (int i = 1; i <= 20; ++i) {
    const auto ofThisLoad = directory.path() / std::to_string(i);
    std::filesystem::create_directory(ofThisLoad);
    void* const plugIn = load(QEL_PLUG_IN);
    ASSERT_NE(plugIn, nullptr);
    const auto runSession = reinterpret_cast<Function>(find(plugIn, "runSession"));
    ASSERT_NE(runSession, nullptr);
    EXPECT_GT(runSession(ofThisLoad.string().c_str()), 0);
    EXPECT_TRUE(unload(plugIn));
    EXPECT_FALSE(isLoaded(QEL_PLUG_IN));
    EXPECT_TRUE(isLoaded(QEL_LIBRARY));
  }
  testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace qel::test
