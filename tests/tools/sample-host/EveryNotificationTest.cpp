#include <gmock/gmock.h>

#include "tests/support/Query.h"
#include "tests/support/StoredEvent.h"
#include "tests/tools/CommandTest.h"
#include "tools/sample-host/NotificationTable.h"

namespace qel::samplehost {
namespace {

using testing::HasSubstr;

class EveryNotificationTest : public test::CommandTest {};

TEST_F(EveryNotificationTest, IsStoredAsExpectedWithEveryEnumerator) {
  const auto played =
      run("qel-sample-host --no-sending --directory $DIR"
          " --session $TESTS/sample-host/everything.jsonl");
  EXPECT_EQ(played.status, 0);
  EXPECT_THAT(played.errors, HasSubstr("IssueListStorageListener::issuesRemoved"));
  std::string stored;
  for (const auto& item : test::query(file("SupportDatabase.db"),
                                      "SELECT json FROM Items WHERE json_extract(json, "
                                      "'$.Category') <> 'MemoryUsage' ORDER BY ID")) {
    stored += test::summaryOf(item) + '\n';
  }
  EXPECT_EQ(stored, test::contentOf(QEL_TOOLS_TESTS "/sample-host/everything.items"));
}

TEST_F(EveryNotificationTest, IsInBothSessionScripts) {
  for (const auto* const name : {"/sample-host/everything.jsonl", "/../../samples/session.jsonl"}) {
    SCOPED_TRACE(name);
    const auto script = test::contentOf(QEL_TOOLS_TESTS + std::string(name));
    for (const auto notifications :
         {applicationNotifications(), projectNotifications(), issueNotifications()}) {
      for (const auto& notification : notifications) {
        EXPECT_THAT(script, HasSubstr("{\"notify\": \"" + std::string(notification.name) + "\""));
      }
    }
    std::istringstream stream(script);
    EXPECT_NO_THROW(readSessionScript(stream, name));
  }
}

}  // namespace
}  // namespace qel::samplehost
