#include <functional>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/MemoryStorage.h"

namespace {

using qel::Guid;
using qel::log::analytics::CipDatabaseClientInterface;
using qel::log::analytics::listeners::IssueKey;
using qel::log::analytics::listeners::IssueListStorageListener;
using qel::log::issue::IssueInstance;
using qel::log::issue::IssueMessage;
using qel::log::issue::MessageCategory;
using qel::log::issue::ObjectAttributes;
using qel::test::AssertionRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

class Information : public qel::log::analytics::IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string& action) const override { return action; }
  std::string getMessageSystemTypeText(const IssueMessage& message) const override {
    return message.systemType == "throw" ? throw std::runtime_error("no text") : message.systemType;
  }
  std::string getMessageObjectDescriptionText(const IssueMessage& message) const override {
    return message.objectDescription;
  }
  std::string getObjectAttributeText(std::uint32_t, const ObjectAttributes&) const override {
    return {};
  }
};

IssueInstance anIssue() {
  IssueInstance issue;
  issue.id = Guid::parse("00112233-4455-6677-8899-AABBCCDDEEFF");
  issue.description = "pipe meets beam";
  issue.timestamp = 1.5;
  issue.message = std::make_shared<IssueMessage>(
      IssueMessage{Guid(), "move", "heating", "pipe", MessageCategory::Error});
  issue.objectAttributes = {{{4, "model"}}};
  return issue;
}

const std::string notFound =
    "qel::log::analytics::listeners::IssueListStorageListener::issuesRemoved "
    "(Application/Log/Analytics/Listeners/IssueListStorageListener:57): Assert: Information "
    "about issue not found in cache.\n";

class IssueListStorageListenerTest : public testing::Test {
 protected:
  void add(const IssueInstance& issue) {
    listener_.issueAdded(std::make_shared<IssueInstance>(issue), false);
  }
  void remove(const IssueInstance& issue) {
    listener_.issuesRemoved({nullptr, std::make_shared<IssueInstance>(issue)});
  }

  qel::test::MemoryStorage storage_;
  AssertionRecorder assertions_;
  IssueListStorageListener listener_{storage_.initialized(), std::make_unique<Information>()};
};

/// Issues that differ from `anIssue` in exactly one respect.
const struct NearTwin {
  const char* differsIn;
  std::function<void(IssueInstance&, IssueMessage&)> change;
  bool isAnother;
} nearTwins[] = {
    {"nothing", [](IssueInstance&, IssueMessage&) {}, false},
    {"message id", [](auto&, IssueMessage& m) { m.id = Guid::create(); }, true},
    {"action", [](auto&, IssueMessage& m) { m.action = "turn"; }, true},
    {"system type", [](auto&, IssueMessage& m) { m.systemType = "cooling"; }, true},
    {"object", [](auto&, IssueMessage& m) { m.objectDescription = "duct"; }, true},
    {"category", [](auto&, IssueMessage& m) { m.category = MessageCategory::Info; }, false},
    {"description", [](IssueInstance& i, auto&) { i.description += "."; }, true},
    {"id", [](IssueInstance& i, auto&) { i.id = Guid::create(); }, true},
    {"an attribute", [](IssueInstance& i, auto&) { i.objectAttributes[0][1] = "x"; }, true},
    {"a further record", [](IssueInstance& i, auto&) { i.objectAttributes.push_back({}); }, true},
    {"priority", [](IssueInstance& i, auto&) { i.priority = {}; }, false},
    {"time", [](IssueInstance& i, auto&) { i.timestamp = 2; }, false},
};

TEST(IssueKeyTest, TellsNearTwinsApart) {
  const IssueInstance original = anIssue();
  for (const auto& [differsIn, change, isAnother] : nearTwins) {
    IssueInstance twin = anIssue();
    auto message = std::make_shared<IssueMessage>(*twin.message);
    change(twin, *message);
    twin.message = message;
    EXPECT_EQ(IssueKey(twin) != IssueKey(original), isAnother) << differsIn;
    EXPECT_EQ((IssueKey(twin) < IssueKey(original)) != (IssueKey(original) < IssueKey(twin)),
              isAnother)
        << differsIn;
  }
}

TEST_F(IssueListStorageListenerTest, TellsARemovalOnceAndWithATimeOfItsOwn) {
  add(anIssue());
  const auto nextMillisecond = std::chrono::system_clock::now() + std::chrono::milliseconds(1);
  while (std::chrono::system_clock::now() < nextMillisecond) {
    std::this_thread::yield();
  }
  remove(anIssue());
  remove(anIssue());
  storage_.databases->join();
  std::vector<std::string> times;
  for (const auto& text : storage_.support->texts(CipDatabaseClientInterface::Items)) {
    times.push_back(nlohmann::json::parse(text).at("Timestamp"));
  }
  ASSERT_EQ(times.size(), 2U);
  EXPECT_LT(times[0], times[1]);
  EXPECT_THAT(assertions_.lines(), ElementsAre(notFound));
}

TEST_F(IssueListStorageListenerTest, AnIssueThatCannotBeToldIsReportedAndNotRemembered) {
  IssueInstance unreadable = anIssue();
  unreadable.message =
      std::make_shared<IssueMessage>(IssueMessage{Guid(), "", "throw", "", MessageCategory::Info});
  add(unreadable);
  remove(unreadable);
  EXPECT_THAT(storage_.recorded(), IsEmpty());
  EXPECT_THAT(
      assertions_.lines(),
      ElementsAre("qel::log::analytics::listeners::IssueListStorageListener::createStorageItem "
                  "(Application/Log/Analytics/Listeners/IssueListStorageListener:118): Assert: "
                  "Information for adding an issue could not be created.\n",
                  notFound));
}

TEST_F(IssueListStorageListenerTest, RecordsNoAdditionWithoutInformationOrIssue) {
  IssueListStorageListener uninformed(*storage_.databases, nullptr);
  uninformed.issueAdded(std::make_shared<IssueInstance>(anIssue()), false);
  uninformed.issueAdded(nullptr, true);
  listener_.issueAdded(nullptr, false);
  EXPECT_THAT(storage_.recorded(), IsEmpty());
  const std::string missing =
      "qel::log::analytics::listeners::IssueListStorageListener::issueAdded "
      "(Application/Log/Analytics/Listeners/IssueListStorageListener:29): "
      "IssueListInformationInterface should not be nullptr.";
  EXPECT_THAT(assertions_.lines(), ElementsAre(missing, missing));
}

}  // namespace
