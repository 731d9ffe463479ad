#include <functional>
#include <stdexcept>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/StoredEvent.h"

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
using testing::HasSubstr;
using testing::IsEmpty;

class Information : public qel::log::analytics::IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string& action) const override {
    return "do " + action;
  }
  std::string getMessageSystemTypeText(const IssueMessage& message) const override {
    return message.systemType == "throw" ? throw std::runtime_error("no text") : message.systemType;
  }
  std::string getMessageObjectDescriptionText(const IssueMessage& message) const override {
    return message.objectDescription;
  }
  std::string getObjectAttributeText(std::uint32_t attribute,
                                     const ObjectAttributes& record) const override {
    return record.at(attribute);
  }
};

const ObjectAttributes attributes{{0, "type"},  {1, "profession"}, {2, "text"}, {4, "model"},
                                  {6, "water"}, {7, "supply"},     {8, "today"}};

IssueInstance anIssue() {
  IssueInstance issue;
  issue.id = Guid::parse("00112233-4455-6677-8899-AABBCCDDEEFF");
  issue.description = "pipe meets beam";
  issue.timestamp = 1.5;
  issue.message = std::make_shared<IssueMessage>(
      IssueMessage{Guid(), "move", "heating", "pipe", MessageCategory::Error});
  issue.objectAttributes = {attributes};
  return issue;
}

class IssueListStorageListenerTest : public testing::Test {
 protected:
  void add(const IssueInstance& issue) {
    listener_.issueAdded(std::make_shared<IssueInstance>(issue), false);
  }
  void remove(const std::vector<IssueInstance>& issues) {
    std::vector<std::shared_ptr<IssueInstance>> shared{nullptr};
    for (const auto& issue : issues) {
      shared.push_back(std::make_shared<IssueInstance>(issue));
    }
    listener_.issuesRemoved(shared);
  }
  std::vector<std::string> recorded() {
    storage_.databases->join();
    return storage_.support->texts(CipDatabaseClientInterface::Items);
  }
  std::vector<std::string> changes() {
    std::vector<std::string> events;
    for (const auto& text : recorded()) {
      events.push_back(nlohmann::json::parse(text).at("Event"));
    }
    return events;
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

TEST(IssueKeyTest, ComparesMessageThenAttributesThenDescriptionThenId) {
  IssueInstance ascending[5];
  ascending[0].description = "z";  // no message comes first
  ascending[1].message = std::make_shared<IssueMessage>();
  ascending[1].description = "y";
  ascending[1].id = Guid::create();
  ascending[2].message = ascending[1].message;
  ascending[2].objectAttributes = {{{0, "a"}}};
  ascending[2].description = "x";
  ascending[2].id = Guid::create();
  ascending[3] = ascending[2];
  ascending[3].description = "xx";
  ascending[3].id = Guid();
  ascending[4] = ascending[3];
  ascending[4].id = Guid::create();
  for (std::size_t i = 1; i < std::size(ascending); ++i) {
    EXPECT_LT(IssueKey(ascending[i - 1]), IssueKey(ascending[i])) << i;
  }
}

TEST_F(IssueListStorageListenerTest, TellsARemovalWithTheDetailsOfTheAdditionAndANewTime) {
  add(anIssue());
  storage_.databases->join();
  listener_.issuesRemoveAll();
  add(anIssue());  // still known, so not told again
  IssueInstance unknown = anIssue();
  unknown.id = Guid::create();
  const auto nextMillisecond = std::chrono::system_clock::now() + std::chrono::milliseconds(1);
  while (std::chrono::system_clock::now() < nextMillisecond) {
    std::this_thread::yield();
  }
  remove({unknown, anIssue()});
  remove({anIssue()});
  add(anIssue());
  EXPECT_THAT(changes(), ElementsAre("Added", "RemovedAll", "Removed", "Added"));
  const std::string details =
      "Description=pipe meets beam;Id=00112233-4455-6677-8899-AABBCCDDEEFF;MessageAction=do move;"
      "MessageCategory=Error;MessageObjectDescription=pipe;MessageSystemType=heating;"
      "ObjectAttributeDescription=text;ObjectAttributeMedium=water;"
      "ObjectAttributeMessageType=type;ObjectAttributeModel=model;"
      "ObjectAttributeProffesion=profession;ObjectAttributeSystem=supply;"
      "ObjectAttributeTimestamp=today;Priority=Low;SolverAttached=false;Timestamp=1.500000";
  const auto told = recorded();
  EXPECT_EQ(qel::test::summaryOf(told[0]), "IssueListStorage|Issue|Added|" + details);
  EXPECT_EQ(qel::test::summaryOf(told[2]), "IssueListStorage|Issue|Removed|" + details);
  EXPECT_EQ(qel::test::summaryOf(told[1]), "IssueListStorage|Issue|RemovedAll|");
  const auto timeOf = [](const std::string& text) {
    return nlohmann::json::parse(text).at("Timestamp").get<std::string>();
  };
  EXPECT_LT(timeOf(told[0]), timeOf(told[2]));
  const std::string notFound =
      "qel::log::analytics::listeners::IssueListStorageListener::issuesRemoved "
      "(Application/Log/Analytics/Listeners/IssueListStorageListener:57): Assert: Information "
      "about issue not found in cache.\n";
  EXPECT_THAT(assertions_.lines(), ElementsAre(notFound, notFound));
}

TEST_F(IssueListStorageListenerTest, AnIssueThatCannotBeToldIsReportedAndNotRemembered) {
  IssueInstance unreadable = anIssue();
  unreadable.message =
      std::make_shared<IssueMessage>(IssueMessage{Guid(), "", "throw", "", MessageCategory::Info});
  IssueInstance withoutAttributes = anIssue();
  withoutAttributes.objectAttributes = {{}};
  add(unreadable);
  add(withoutAttributes);
  EXPECT_THAT(recorded(), IsEmpty());
  const std::string failed =
      "qel::log::analytics::listeners::IssueListStorageListener::createStorageItem "
      "(Application/Log/Analytics/Listeners/IssueListStorageListener:118): Assert: Information "
      "for adding an issue could not be created.\n";
  EXPECT_THAT(assertions_.lines(), ElementsAre(failed, failed));
  remove({unreadable});
  EXPECT_THAT(assertions_.lines().back(), HasSubstr("not found in cache"));
}

TEST_F(IssueListStorageListenerTest, RecordsNoAdditionWithoutInformation) {
  IssueListStorageListener uninformed(*storage_.databases, nullptr);
  uninformed.issueAdded(std::make_shared<IssueInstance>(anIssue()), false);
  uninformed.issueAdded(nullptr, true);
  listener_.issueAdded(nullptr, false);
  listener_.issueAdded(std::make_shared<IssueInstance>(anIssue()), true);
  listener_.issueReadStateChanged({std::make_shared<IssueInstance>(anIssue())});
  uninformed.issuesRemoveAll();
  EXPECT_THAT(changes(), ElementsAre("RemovedAll"));
  const std::string missing =
      "qel::log::analytics::listeners::IssueListStorageListener::issueAdded "
      "(Application/Log/Analytics/Listeners/IssueListStorageListener:29): "
      "IssueListInformationInterface should not be nullptr.";
  EXPECT_THAT(assertions_.lines(), ElementsAre(missing, missing));
}

}  // namespace
