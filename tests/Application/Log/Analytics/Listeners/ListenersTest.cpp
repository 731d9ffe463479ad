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
using issue::ObjectAttributes;
using testing::ElementsAre;
using testing::IsEmpty;

class Information : public IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string&) const override { return {}; }
  std::string getMessageSystemTypeText(const IssueMessage&) const override {
    throw std::runtime_error("no text");
  }
  std::string getMessageObjectDescriptionText(const IssueMessage&) const override { return {}; }
  std::string getObjectAttributeText(std::uint32_t, const ObjectAttributes&) const override {
    return {};
  }
};

class IssueListStorageListenerTest : public testing::Test {
 protected:
  test::MemoryStorage storage_;
  test::AssertionRecorder assertions_;
  IssueListStorageListener listener_{storage_.initialized(), std::make_unique<Information>()};
  const std::shared_ptr<IssueInstance> issue_ = std::make_shared<IssueInstance>();
};

TEST_F(IssueListStorageListenerTest, TellsARemovalWithATimeOfItsOwn) {
  listener_.issueAdded(issue_, false);
  const auto added = std::chrono::system_clock::now();
  while (std::chrono::system_clock::now() < added + std::chrono::milliseconds(1)) {
  }
  listener_.issuesRemoved({nullptr, issue_});
  storage_.databases->join();
  const auto texts = storage_.support->texts(CipDatabaseClientInterface::Items);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_LT(nlohmann::json::parse(texts[0]).at("Timestamp"),
            nlohmann::json::parse(texts[1]).at("Timestamp"));
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(IssueListStorageListenerTest, ReportsWhatCannotBeToldAndDoesNotRememberIt) {
  issue_->message = std::make_shared<IssueMessage>();
  listener_.issueAdded(issue_, false);
  listener_.issuesRemoved({issue_});
  listener_.issueAdded(nullptr, false);
  IssueListStorageListener(*storage_.databases, nullptr).issueAdded(issue_, false);
  EXPECT_THAT(storage_.recorded(), IsEmpty());
  const std::string listener = "qel::log::analytics::listeners::IssueListStorageListener::";
  const std::string file = " (Application/Log/Analytics/Listeners/IssueListStorageListener:";
  EXPECT_THAT(
      assertions_.lines(),
      ElementsAre(listener + "createStorageItem" + file +
                      "118): Assert: Information for adding an issue could not be created.\n",
                  listener + "issuesRemoved" + file +
                      "57): Assert: Information about issue not found in cache.\n",
                  listener + "issueAdded" + file +
                      "29): IssueListInformationInterface should not be nullptr."));
}

}  // namespace
}  // namespace qel::log::analytics::listeners
