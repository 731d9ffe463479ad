#include <array>
#include <cstdlib>

#include <gmock/gmock.h>

#ifdef _WIN32
#include "docs/snippets/CrashRecorder.windows.h"
#else
#include "docs/snippets/CrashRecorder.posix.h"
#endif
#include "tests/support/Environment.h"
#include "tests/support/Session.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {
namespace {

constexpr const char* directoryVariable = "QEL_CRASH_TEST";

#ifdef _WIN32
void fault() {
  RaiseException(static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION), EXCEPTION_NONCONTINUABLE, 0,
                 nullptr);
}
constexpr const char* faultRecord = "3221225477";
constexpr const char* abortRecord = "\"abort\"";
#else
using Frame = std::array<volatile int, 1000>;  // large, because ThreadSanitizer limits the depth
int overflow(Frame& outer) {
  Frame inner{outer[0]};
  return outer[0] == 1 ? 0 : overflow(inner) + inner[0];
}
void fault() {
  Frame begin{};
  overflow(begin);
}
constexpr const char* faultRecord = "signal 11";
constexpr const char* abortRecord = "signal 6";
#endif

[[noreturn]] void crash(void (*end)()) {
  const char* const directory = std::getenv(directoryVariable);
  const Session session(directory == nullptr ? "" : directory);
  session.insert(1);
  const CrashRecorder recorder(session.databases);
  end();
  std::exit(0);
}

TEST(CrashRecorderTest, StoresTheQueuedItemsAndTheCrash) {
  const TemporaryDirectory directory;
  if (std::getenv(directoryVariable) == nullptr) {  // not in a process that crashes
    setEnvironment(directoryVariable, directory.text());
  }
  for (void (*const end)() : {+fault, +[] { std::abort(); }}) {
    EXPECT_EXIT(
        crash(end), [](int status) { return status != 0; }, "");
  }
  EXPECT_THAT(
      query(
          directory.path() / "ItemDatabase.db",
          "SELECT json FROM Items WHERE json = '1' OR json LIKE '%\"Subcategory\": \"Crashed\"%'"),
      testing::ElementsAre("1", testing::HasSubstr(faultRecord), "1",
                           testing::HasSubstr(abortRecord)));
}

}  // namespace
}  // namespace qel::test
