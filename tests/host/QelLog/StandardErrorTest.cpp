#include <gmock/gmock.h>
#include <io.h>
#include <windows.h>

#include "tests/support/Logged.h"

namespace qel::log {
namespace {

using namespace testing;

void logAtOnce(const std::string& message) {
  test::logMessage(message);
  test::waitForTheLog();
}

/// Ends standard error, so that the next file may take its handle, its descriptor or its stream.
enum class End { Stream, Descriptor, Handle };

[[noreturn]] void logAfter(End end, const std::filesystem::path& file) {
  if (end == End::Stream) {
    std::fclose(stderr);
  } else if (end == End::Descriptor) {
    _close(2);
  } else {
    CloseHandle(GetStdHandle(STD_ERROR_HANDLE));
  }
  std::FILE* const next = _wfopen(file.c_str(), L"wb");
  logAtOnce("after");
  std::fputs("of the host", next);
  std::fclose(next);
  std::exit(test::contentOf(file) == "of the host" ? 7 : 1);
}

TEST(StandardErrorTest, TheLogDoesNotWriteToAFileThatTakesItsPlace) {
  const test::TemporaryDirectory directory;
  for (const End end : {End::Stream, End::Descriptor, End::Handle}) {
    EXPECT_EXIT(logAfter(end, directory.path() / "file"), ExitedWithCode(7),
                EndsWith("test: after\n"))
        << static_cast<int>(end);
  }
}

TEST(StandardErrorTest, TheLogNeedsNone) {
  if (GetEnvironmentVariableW(L"QEL_CHILD", nullptr, 0) > 0) {
    logAtOnce("unseen");
    std::_Exit(GetStdHandle(STD_ERROR_HANDLE) == nullptr ? 7 : 1);
  }
  SetEnvironmentVariableW(L"QEL_CHILD", L"1");
  const int errors = _dup(2);
  _close(2);
  EXPECT_EQ(7, _spawnl(_P_WAIT, testing::internal::GetArgvs().front().c_str(), "child",
                       "--gtest_filter=*.TheLogNeedsNone", nullptr));
  _dup2(errors, 2);
}

}  // namespace
}  // namespace qel::log
