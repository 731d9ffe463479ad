#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "tests/support/StalledErrors.h"

namespace qel::test {

/// Hangs until the test's time limit if the worker waits for a reader of the pipe.
TEST(StalledErrorsTest, DelayNoThread) {
  const StalledErrors errors;
  util::ThreadedLoop loop;  // is destroyed first, and waits for the worker
  loop.perform({}, []() -> bool { throw 7; }, std::chrono::hours(1),
               {util::RunPolicy::AtStart, true});
}

}  // namespace qel::test
