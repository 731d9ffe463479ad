#include <cstdlib>

#include <gmock/gmock.h>

#include "docs/snippets/CrashRecorder.h"
#include "tests/support/Session.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

constexpr const char* directoryVariable = "QEL_CRASH_TEST";

[[noreturn]] void crash() {
  const Session session(std::getenv(directoryVariable));
  session.insert(1);
  const CrashRecorder recorder(session.databases);
  RaiseException(static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION), EXCEPTION_NONCONTINUABLE, 0,
                 nullptr);
  std::abort();
}

TEST(CrashRecorderTest, StoresTheQueuedItemsAndTheCrash) {
  const TemporaryDirectory directory;
  if (std::getenv(directoryVariable) == nullptr) {  // not in the process that crashes
    _putenv_s(directoryVariable, directory.text().c_str());
  }
  EXPECT_EXIT(crash(), testing::ExitedWithCode(static_cast<int>(EXCEPTION_ACCESS_VIOLATION)), "");
  const auto rows = query(directory.path() / "ItemDatabase.db",
                          "SELECT json FROM Items WHERE json = '1' OR json LIKE '%3221225477%'");
  EXPECT_THAT(rows, testing::SizeIs(2));
}

}  // namespace qel::test
