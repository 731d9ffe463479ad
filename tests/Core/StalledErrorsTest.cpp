#include <gtest/gtest.h>

#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "tests/support/StalledPipe.h"

namespace qel::test {
namespace {

/// Hangs until the test's time limit if the worker waits for a reader of the pipe.
TEST(StalledErrorsTest, DelayNoThread) {
  const StalledPipe pipe;
  const int standardError = dup(STDERR_FILENO);
  dup2(open(pipe.path().c_str(), O_WRONLY), STDERR_FILENO);
  {
    util::ThreadedLoop loop;
    loop.perform({}, []() -> bool { throw 7; }, std::chrono::hours(1),
                 {util::RunPolicy::AtStart, true});
  }  // waits for the worker
  dup2(standardError, STDERR_FILENO);
}

}  // namespace
}  // namespace qel::test
