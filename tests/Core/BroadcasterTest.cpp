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
  Diary hear(const std::string& text) {
    diary_.clear();
    broadcaster_.notify(&ListenerInterface::heard, text);
    return diary_;
  }

  Diary diary_;
  qel::Broadcaster<ListenerInterface> broadcaster_;
  const std::shared_ptr<Listener> a_ = std::make_shared<Listener>("a", diary_);
  std::shared_ptr<Listener> b_ = std::make_shared<Listener>("b", diary_);
  qel::test::AssertionRecorder assertions_;
};

TEST_F(BroadcasterTest, CallsLiveListenersInOrderAndAllowsChangesDuringACall) {
  for (const auto& listener : {a_, b_, a_}) {
    broadcaster_.registerListener(listener);
  }
  EXPECT_THAT(hear("1"), ElementsAre("a:1", "b:1", "a:1"));
  const auto late = std::make_shared<Listener>("late", diary_);
  a_->reaction = [&] {
    broadcaster_.registerListener(late);
    broadcaster_.unregisterListener(a_);
    b_.reset();
  };
  EXPECT_THAT(hear("2"), ElementsAre("a:2", "a:2"));
  broadcaster_.registerListener(a_);
  late->reaction = [] { throw std::runtime_error("reaches the caller"); };
  EXPECT_THROW(hear("3"), std::runtime_error);
  EXPECT_THAT(diary_, ElementsAre("late:3"));
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(BroadcasterTest, ReportsMisuseAndGoesOnUnlessAssertionsAreOff) {
  for (const bool enabled : {false, true}) {
    qel::assert::Assert::setEnabled(enabled);
    broadcaster_.registerListener(nullptr);
    broadcaster_.unregisterListener(nullptr);
    broadcaster_.unregisterListener(a_);
  }
  const std::string name = "qel::Broadcaster<class sample::ListenerInterface>::";
  const std::string file = "Listener (Core/Utilities/Template/Broadcaster:";
  EXPECT_THAT(
      assertions_.lines(),
      ElementsAre(
          name + "register" + file + "53): Trying to register a nullptr listener",
          name + "unregister" + file +
              "61): Broadcaster::unregisterListener shouldn't be called with nullptr",
          name + "unregister" + file + "69): Trying to unregister a non registered listener"));
  EXPECT_THAT(hear("x"), IsEmpty());
}

}  // namespace
