#include <thread>

#include <gtest/gtest.h>

#include "host/QelAssert/Assert.h"

namespace qel::assert {
namespace {

struct LateReporter {
  ~LateReporter() { Assert::addAssert({"too late", "~LateReporter", __FILE__, __LINE__}); }
};

TEST(AssertTest, DoesNotCallAHandlerThatWasDestroyed) {
  int calls = 0;
  std::thread([&calls] {
    [[maybe_unused]] thread_local const LateReporter destroyedAfterTheHandler;
    AssertFunctionOne::registerHandler([&calls](const AssertInfo&) { ++calls; });
    Assert::addAssert({"in time", "thread", __FILE__, __LINE__});
  }).join();
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace qel::assert
