#include <thread>

#include <gtest/gtest.h>

#include "host/QelAssert/Assert.h"

namespace qel::assert {
namespace {

struct LateReporter {
  ~LateReporter() { Assert::addAssert({"too late", "~LateReporter", __FILE__, __LINE__}); }
};

TEST(AssertTest, AHandlerThatIsGoneHearsNothing) {
  int heard = 0;
  std::thread([&heard] {
    thread_local LateReporter madeBeforeTheHandler;
    (void)madeBeforeTheHandler;
    AssertFunctionOne::registerHandler([&heard](const AssertInfo&) { ++heard; });
    Assert::addAssert({"in time", "thread", __FILE__, __LINE__});
  }).join();
  EXPECT_EQ(heard, 1);
}

}  // namespace
}  // namespace qel::assert
