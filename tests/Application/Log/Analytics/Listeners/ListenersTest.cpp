// What listeners record of each notification is tested with the whole sample session.

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/MemoryStorage.h"

namespace qel::log::analytics::listeners {
namespace {

using issue::IssueInstance;
using issue::IssueMessage;
using issue::MessageCategory;
using issue::ObjectAttributes;
using testing::ElementsAre;
using testing::IsEmpty;

class Information : public IssueListInformationInterface {
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

const std::string listener = "qel::log::analytics::listeners::IssueListStorageListener::";
const std::string file = " (Application/Log/Analytics/Listeners/IssueListStorageListener:";
const std::string notFound = listener + "issuesRemoved" + file +
                             "57): Assert: Information about issue not found in cache.\n";

class IssueListStorageListenerTest : public testing::Test {
 protected:
  void add(const IssueInstance& issue) {
    listener_.issueAdded(std::make_shared<IssueInstance>(issue), false);
  }
  void remove(const IssueInstance& issue) {
    listener_.issuesRemoved({nullptr, std::make_shared<IssueInstance>(issue)});
  }

  test::MemoryStorage storage_;
  test::AssertionRecorder assertions_;
  IssueListStorageListener listener_{storage_.initialized(), std::make_unique<Information>()};
};

/// Issues that differ from `anIssue` in exactly one respect.
struct NearTwin {
  const char* differsIn;
  std::function<void(IssueInstance&, IssueMessage&)> change;
  bool isAnother;
};

const NearTwin nearTwins[] = {
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
    const IssueKey key(original);
    const IssueKey other(twin);
    EXPECT_EQ(other != key, isAnother) << differsIn;
    EXPECT_EQ((other < key) != (key < other), isAnother) << differsIn;
  }
}

TEST_F(IssueListStorageListenerTest, TellsARemovalOnceAndWithATimeOfItsOwn) {
  add(anIssue());
  const auto added = std::chrono::system_clock::now();
  while (std::chrono::system_clock::now() < added + std::chrono::milliseconds(1)) {
  }
  remove(anIssue());
  remove(anIssue());
  storage_.databases->join();
  const auto texts = storage_.support->texts(CipDatabaseClientInterface::Items);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_LT(nlohmann::json::parse(texts[0]).at("Timestamp"),
            nlohmann::json::parse(texts[1]).at("Timestamp"));
  EXPECT_THAT(assertions_.lines(), ElementsAre(notFound));
}

TEST_F(IssueListStorageListenerTest, ReportsWhatCannotBeToldAndDoesNotRememberIt) {
  IssueInstance unreadable = anIssue();
  unreadable.message =
      std::make_shared<IssueMessage>(IssueMessage{Guid(), "", "throw", "", MessageCategory::Info});
  add(unreadable);
  remove(unreadable);
  IssueListStorageListener uninformed(*storage_.databases, nullptr);
  uninformed.issueAdded(std::make_shared<IssueInstance>(anIssue()), false);
  uninformed.issueAdded(nullptr, true);
  listener_.issueAdded(nullptr, false);
  EXPECT_THAT(storage_.recorded(), IsEmpty());
  const std::string missing =
      listener + "issueAdded" + file + "29): IssueListInformationInterface should not be nullptr.";
  EXPECT_THAT(
      assertions_.lines(),
      ElementsAre(listener + "createStorageItem" + file +
                      "118): Assert: Information for adding an issue could not be created.\n",
                  notFound, missing, missing));
}

}  // namespace
}  // namespace qel::log::analytics::listeners
