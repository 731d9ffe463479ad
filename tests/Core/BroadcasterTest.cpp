#include <gmock/gmock.h>

#include "Core/Utilities/Template/Broadcaster.h"
#include "tests/support/AssertionRecorder.h"

namespace sample {

struct ListenerInterface {
  virtual ~ListenerInterface() = default;
  virtual void heard(const std::string& text) = 0;
};

}  // namespace sample

namespace {

using sample::ListenerInterface;
using testing::ElementsAre;
using testing::IsEmpty;

using Diary = std::vector<std::string>;

struct Listener : ListenerInterface {
  Listener(std::string ownName, Diary& sharedDiary)
      : name(std::move(ownName)), diary(sharedDiary) {}
  void heard(const std::string& text) override {
    diary.push_back(name + ":" + text);
    std::exchange(reaction, [] {})();
  }

  const std::string name;
  Diary& diary;
  std::function<void()> reaction = [] {};
};

class BroadcasterTest : public testing::Test {
 protected:
  std::shared_ptr<Listener> registered(const std::string& name) {
    auto listener = std::make_shared<Listener>(name, diary_);
    broadcaster_.registerListener(listener);
    return listener;
  }
  Diary hear(const std::string& text) {
    diary_.clear();
    broadcaster_.notify(&ListenerInterface::heard, text);
    return diary_;
  }

  Diary diary_;
  qel::Broadcaster<ListenerInterface> broadcaster_;
  qel::test::AssertionRecorder assertions_;
};

TEST_F(BroadcasterTest, CallsLiveListenersInOrderOfRegistrationUntilTheyAreTakenOff) {
  const auto a = registered("a");
  auto b = registered("b");
  const auto c = registered("c");
  broadcaster_.registerListener(a);
  EXPECT_THAT(hear("1"), ElementsAre("a:1", "b:1", "c:1", "a:1"));
  b.reset();
  EXPECT_THAT(hear("2"), ElementsAre("a:2", "c:2", "a:2"));
  broadcaster_.unregisterListener(a);
  EXPECT_THAT(hear("3"), ElementsAre("c:3"));
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(BroadcasterTest, ReportsMisuseAndGoesOnUnlessAssertionsAreOff) {
  for (const bool enabled : {false, true}) {
    qel::assert::Assert::setEnabled(enabled);
    broadcaster_.registerListener(nullptr);
    broadcaster_.unregisterListener(nullptr);
    broadcaster_.unregisterListener(std::make_shared<Listener>("stranger", diary_));
  }
  const std::string name = "qel::Broadcaster<class sample::ListenerInterface>::";
  const std::string registering = name + "registerListener (Core/Utilities/Template/Broadcaster:";
  const std::string removing = name + "unregisterListener (Core/Utilities/Template/Broadcaster:";
  EXPECT_THAT(
      assertions_.lines(),
      ElementsAre(
          registering + "53): Trying to register a nullptr listener",
          removing + "61): Broadcaster::unregisterListener shouldn't be called with nullptr",
          removing + "69): Trying to unregister a non registered listener"));
  EXPECT_THAT(hear("x"), IsEmpty());
}

TEST_F(BroadcasterTest, AllowsChangesDuringACall) {
  const auto a = registered("a");
  auto b = registered("b");
  std::shared_ptr<Listener> late;
  a->reaction = [&] {
    late = registered("late");
    broadcaster_.unregisterListener(a);
    b.reset();
  };
  EXPECT_THAT(hear("1"), ElementsAre("a:1"));
  late->reaction = [] { throw std::runtime_error("reaches the caller"); };
  EXPECT_THROW(hear("2"), std::runtime_error);
  EXPECT_THAT(diary_, ElementsAre("late:2"));
}

}  // namespace
