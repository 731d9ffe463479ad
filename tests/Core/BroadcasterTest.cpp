#include <gmock/gmock.h>

#include "Core/Utilities/Template/Broadcaster.h"
#include "tests/support/AssertionRecorder.h"

namespace {

using namespace testing;
using Calls = std::vector<std::string>;

struct Listener {
  void notified(const std::string& text) {
    calls.push_back(name + ":" + text);
    std::exchange(reaction, [] {})();
  }

  const std::string name;
  Calls& calls;
  std::function<void()> reaction = [] {};
};

class BroadcasterTest : public testing::Test {
 protected:
  std::shared_ptr<Listener> makeListener(const std::string& name) {
    return std::shared_ptr<Listener>(new Listener{name, calls_});
  }
  Calls notify(const std::string& text) {
    calls_.clear();
    broadcaster_.notify(&Listener::notified, text);
    return calls_;
  }

  Calls calls_;
  qel::Broadcaster<Listener> broadcaster_;
  const std::shared_ptr<Listener> a_ = makeListener("a");
  const qel::test::AssertionRecorder assertions_;
};

TEST_F(BroadcasterTest, CallsLiveListenersInOrderAndAllowsChangesDuringACall) {
  auto b = makeListener("b");
  const auto late = makeListener("late");
  for (const auto& listener : {a_, b, a_}) {
    broadcaster_.registerListener(listener);
  }
  EXPECT_THAT(notify("1"), ElementsAre("a:1", "b:1", "a:1"));
  a_->reaction = [&] {
    broadcaster_.registerListener(late);
    broadcaster_.unregisterListener(a_);
    b.reset();
  };
  EXPECT_THAT(notify("2"), ElementsAre("a:2", "a:2"));
  broadcaster_.registerListener(a_);
  late->reaction = [] { throw std::runtime_error("reaches the caller"); };
  EXPECT_THROW(notify("3"), std::runtime_error);
  EXPECT_THAT(calls_, ElementsAre("late:3"));
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(BroadcasterTest, ReportsMisuseUnlessAssertionsAreOff) {
  for (const bool enabled : {false, true}) {
    qel::assert::Assert::setEnabled(enabled);
    broadcaster_.registerListener(nullptr);
    broadcaster_.unregisterListener(nullptr);
    broadcaster_.unregisterListener(a_);
  }
  EXPECT_THAT(assertions_.lines(),
              ElementsAre(HasSubstr("Listener>::registerListener (Core/Utilities/Template/"),
                          HasSubstr("unregisterListener shouldn't be called with nullptr"),
                          HasSubstr("Trying to unregister a non registered listener")));
  EXPECT_THAT(notify("x"), IsEmpty());
}

}  // namespace
