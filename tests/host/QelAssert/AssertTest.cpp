#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "host/QelAssert/Assert.h"

namespace qel::assert {

struct LateReporter {
  ~LateReporter() { Assert::addAssert({"too late", "~LateReporter", __FILE__, __LINE__}); }
};

TEST(AssertTest, DoesNotCallAHandlerThatIsBeingDestroyed) {
  int calls = 0;
  std::thread([&calls] {
    AssertFunctionOne::registerHandler(
        [&calls, reporter = std::make_shared<LateReporter>()](const AssertInfo&) { ++calls; });
    Assert::addAssert({"in time", "thread", __FILE__, __LINE__});
  }).join();
  EXPECT_EQ(calls, 1);
}

TEST(AssertTest, TheEndOfAThreadDestroysItsHandlerOnce) {
  constexpr int threadsAtOnce = 200;
  constexpr int rounds = 100;
  std::atomic<int> calls = 0;
  const auto resource = std::make_shared<int>(1);
  const auto useHandlers = [&] {
    for (int i = 0; i < 2; ++i) {  // the second replaces the first
      AssertFunctionOne::registerHandler([&calls, resource](const auto&) { calls += *resource; });
    }
    Assert::addAssert({"message", "function", __FILE__, __LINE__});
  };
  for (int round = 1; round <= rounds; ++round) {
    std::vector<std::thread> threads;
    for (int i = 0; i < threadsAtOnce; ++i) {
      threads.emplace_back(useHandlers);
    }
    for (auto& thread : threads) {
      thread.join();
    }
    ASSERT_EQ(calls, round * threadsAtOnce);
    ASSERT_EQ(resource.use_count(), 1);
  }
}

}  // namespace qel::assert
