// What listeners record of each notification is tested with the whole sample session.

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/MemoryStorage.h"

namespace qel::log::analytics::listeners {

using namespace testing;

class Information : public IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string&) const override { return {}; }
  std::string getMessageSystemTypeText(const issue::IssueMessage&) const override {
    throw std::runtime_error("no text");
  }
  std::string getMessageObjectDescriptionText(const issue::IssueMessage&) const override {
    return {};
  }
  std::string getObjectAttributeText(std::uint32_t, const issue::ObjectAttributes&) const override {
    return {};
  }
};

TEST(IssueListStorageListenerTest, RecordsARemovalWithItsOwnTimeAndReportsAnIssueWithoutText) {
  const test::MemoryStorage storage;
  const test::AssertionRecorder assertions;
  IssueListStorageListener listener(storage.initialized(), std::make_unique<Information>());
  const auto issue = std::make_shared<issue::IssueInstance>();
  listener.issueAdded(issue, false);
  const auto added = std::chrono::system_clock::now();
  while (std::chrono::system_clock::now() < added + std::chrono::milliseconds(1)) {
  }
  listener.issuesRemoved({nullptr, issue});
  listener.issueAdded(nullptr, false);

  issue->message = std::make_shared<issue::IssueMessage>();
  listener.issueAdded(issue, false);
  listener.issuesRemoved({issue});
  IssueListStorageListener(*storage.databases, nullptr).issueAdded(issue, false);
  EXPECT_THAT(assertions.lines(),
              ElementsAre(HasSubstr("Information for adding an issue could not be created."),
                          HasSubstr("Information about issue not found in cache."),
                          HasSubstr("IssueListInformationInterface should not be nullptr.")));

  storage.databases->join();
  const auto texts = storage.support->texts(CipDatabaseClientInterface::Items);
  ASSERT_THAT(texts, SizeIs(2));
  EXPECT_LT(nlohmann::json::parse(texts[0]).at("Timestamp"),
            nlohmann::json::parse(texts[1]).at("Timestamp"));
}

}  // namespace qel::log::analytics::listeners
