#include <gmock/gmock.h>

#include "tests/support/Query.h"
#include "tests/support/StoredEvent.h"
#include "tests/tools/CommandTest.h"

namespace qel::samplehost {

class SessionTest : public test::CommandTest {};

TEST_F(SessionTest, StoresEveryNotificationWithEveryEnumerator) {
  expectTranscript("sample-host/notifications.txt");
  std::string stored;
  for (const auto& item : test::query(file("SupportDatabase.db"),
                                      "SELECT json FROM Items WHERE json_extract(json, "
                                      "'$.Category') <> 'MemoryUsage' ORDER BY ID")) {
    stored += test::summaryOf(item) + '\n';
  }
  EXPECT_EQ(stored, test::contentOf(QEL_TOOLS_TESTS "/sample-host/everything.items"));
}

TEST_F(SessionTest, SaysWhyItCannotBegin) {
  expectTranscript("sample-host/options.txt");
  EXPECT_TRUE(std::filesystem::is_empty(file("")));
}

TEST_F(SessionTest, StoresOnlyWhatItIsAllowedToAndKeepsTheInstallation) {
  expectTranscript("sample-host/sessions.txt");
}

TEST_F(SessionTest, ReportsRowsThatCouldNotBeStored) { expectTranscript("sample-host/losses.txt"); }

TEST_F(SessionTest, LeavesADirectoryInUseToItsUserUntilTheInterruption) {
  test::Process user("qel-sample-host --directory $DIR --no-sending",
                     R"({"notify": "onHelpAction", "name": "x", "details": {}}
                        {"join": true}
                        {"wait": 3600})");
  const auto rows = [this] {
    return run("sqlite3 -readonly $DIR/SupportDatabase.db .dump").output;
  };
  const auto isStored = [&] { return rows().find("INSERT INTO Items") != std::string::npos; };
  ASSERT_TRUE(test::waitUntil(isStored));
  const auto before = rows();
  for (const std::string other :
       {"qel-sample-host --directory $DIR --retention 0 --session $TESTS/sample-host/started.jsonl",
        "qel-support purge $DIR --yes"}) {
    const auto outcome = run(other);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors,
                testing::EndsWith("\"$DIR\" is in use by another instance of the program\n"));
  }
  EXPECT_EQ(rows(), before);
  kill(user.id(), SIGINT);
  EXPECT_THAT(user.readUntil(EOF), testing::HasSubstr("until the session was interrupted"));
  EXPECT_EQ(user.join(), 0) << user.errors();
}

}  // namespace qel::samplehost
