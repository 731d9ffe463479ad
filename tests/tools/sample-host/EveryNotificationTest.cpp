// Plays every notification there is with the program itself.

#include <gmock/gmock.h>

#include "tests/support/Files.h"
#include "tests/support/Process.h"
#include "tests/support/Query.h"
#include "tests/support/StoredEvent.h"
#include "tools/sample-host/NotificationTable.h"

namespace qel::samplehost {
namespace {

using testing::HasSubstr;

const std::filesystem::path everything = QEL_SOURCE_DIR "/tests/tools/sample-host/everything.jsonl";
const std::filesystem::path workingDay = QEL_SOURCE_DIR "/samples/session.jsonl";

TEST(EveryNotificationTest, IsStoredAsExpectedWithEveryEnumerator) {
  const test::TemporaryDirectory directory;
  test::Process program(QEL_SAMPLE_HOST " --no-sending --directory " + directory.text() +
                        " --session " + everything.string());
  program.readUntil(EOF);
  EXPECT_EQ(program.join(), 0) << program.errors();
  std::string stored;
  for (const auto& item : test::query(directory.path() / "SupportDatabase.db",
                                      "SELECT json FROM Items WHERE json_extract(json, "
                                      "'$.Category') <> 'MemoryUsage' ORDER BY ID")) {
    stored += test::summaryOf(item) + '\n';
  }
  auto expected = everything;
  EXPECT_EQ(stored, test::contentOf(expected.replace_extension("items")));
  EXPECT_THAT(program.errors(), HasSubstr("IssueListStorageListener::issuesRemoved"));
}

TEST(EveryNotificationTest, IsInTheSampleSession) {
  for (const auto& script : {everything, workingDay}) {
    const auto text = test::contentOf(script);
    for (const auto notifications :
         {applicationNotifications(), projectNotifications(), issueNotifications()}) {
      for (const auto& notification : notifications) {
        EXPECT_THAT(text, HasSubstr("{\"notify\": \"" + std::string(notification.name) + "\""))
            << script;
      }
    }
    std::istringstream stream(text);
    EXPECT_NO_THROW(readSessionScript(stream, script.string()));
  }
}

}  // namespace
}  // namespace qel::samplehost
