#include "tests/support/Query.h"
#include "tests/support/StoredEvent.h"
#include "tests/tools/CommandTest.h"

namespace qel::samplehost {
namespace {

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

TEST_F(SessionTest, LeavesADirectoryInUseToItsUser) {
  const std::string playing =
      "qel-sample-host --directory $DIR --server 127.0.0.1:1 --exit-deadline 2 --retention 0"
      " --session $TESTS/sample-host/started.jsonl";
  run(playing);
  const auto rows = [this] {
    return run("sh -c 'for f in $DIR/*.db; do sqlite3 $f .dump; done'").output;
  };
  const auto before = rows();
  EXPECT_NE(before.find("INSERT INTO Items"), std::string::npos);
  const db::sql::SqlDatabaseAdapter user(file("ItemDatabase.db"));
  const auto second = run(playing);
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.errors,
            "qel-sample-host: \"$DIR\" is in use by another instance of the program\n");
  EXPECT_EQ(rows(), before);
}

}  // namespace
}  // namespace qel::samplehost
