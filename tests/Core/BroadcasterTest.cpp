#include <gmock/gmock.h>

#include "Core/Utilities/Template/Broadcaster.h"
#include "tests/support/AssertionRecorder.h"

namespace {

using namespace testing;

struct Listener {
  void notified(char call) { reaction(call); }

  std::function<void(char)> reaction;
};

TEST(BroadcasterTest, CallsLiveListenersInOrderAndAllowsChangesDuringACall) {
  std::string calls;
  qel::Broadcaster<Listener> broadcaster;
  const auto makeListener = [&](const std::string& name) {
    return std::make_shared<Listener>(
        Listener{[&calls, name](char call) { calls += name + call; }});
  };
  const auto a = makeListener("a");
  auto b = makeListener("b");
  const auto late = makeListener("late");
  const auto changing = std::make_shared<Listener>(Listener{[&](char) {
    broadcaster.unregisterListener(a);
    broadcaster.registerListener(late);
    b.reset();
  }});
  for (const auto& listener : {changing, a, b, a}) {
    broadcaster.registerListener(listener);
  }
  broadcaster.notify(&Listener::notified, '1');
  EXPECT_EQ(calls, "a1a1");
  changing->reaction = [](char) { throw std::runtime_error("reaches the caller"); };
  EXPECT_THROW(broadcaster.notify(&Listener::notified, '2'), std::runtime_error);
  broadcaster.unregisterListener(changing);
  broadcaster.notify(&Listener::notified, '3');
  EXPECT_EQ(calls, "a1a1late3");
}

TEST(BroadcasterTest, ReportsMisuseUnlessAssertionsAreOff) {
  const qel::test::AssertionRecorder assertions;
  qel::Broadcaster<Listener> broadcaster;
  for (const bool enabled : {false, true}) {
    qel::assert::Assert::setEnabled(enabled);
    broadcaster.registerListener(nullptr);
    broadcaster.unregisterListener(nullptr);
    broadcaster.unregisterListener(std::make_shared<Listener>());
  }
  EXPECT_THAT(assertions.lines(),
              ElementsAre(EndsWith("Trying to register a nullptr listener"),
                          EndsWith("unregisterListener shouldn't be called with nullptr"),
                          EndsWith("Trying to unregister a non registered listener")));
  broadcaster.notify(&Listener::notified, '1');
}

}  // namespace
