// Runs the program itself.

#include <filesystem>

#include <gmock/gmock.h>

#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/Query.h"
#include "tests/tools/Transcript.h"

namespace qel::samplehost {
namespace {

using namespace testing;

class SessionTest : public testing::Test {
 protected:
  std::filesystem::path data(const std::string& name) const { return directory_.path() / name; }
  std::string inData() const { return " --directory " + directory_.text() + " "; }

  static test::Outcome play(const std::string& arguments, const std::string& script = "") {
    test::Process program(QEL_SAMPLE_HOST " " + arguments, script);
    return {program.readUntil(EOF), program.join(), program.errors()};
  }

  std::vector<std::string> query(const std::string& database, const std::string& statement) const {
    return test::query(data(database), statement);
  }

  const test::TemporaryDirectory directory_;
};

/// Nobody listens there.
constexpr const char* deadServer = "--server 127.0.0.1:1 --exit-deadline 2 ";

constexpr const char* started = R"({"notify": "onApplicationStarted", "text": "x"})";

TEST_F(SessionTest, StoresOnlyWhatItIsAllowedToAndKeepsTheInstallation) {
  const std::string envelope =
      "SELECT json_extract(json, '$.InstallationId'), json_extract(json, '$.SessionId')"
      " FROM Environments WHERE json_extract(json, '$.OS.Name') <> ''"
      " AND json_extract(json, '$.Hardware.CPU') <> ''"
      " AND json_extract(json, '$.Hardware.Memory.Total') LIKE '% kB'"
      " AND json LIKE '%qel-sample-host%' ORDER BY ID";
  const std::string session = "0A1B2C3D-0000-4000-8000-0123456789AB";
  EXPECT_THAT(play(inData() + "--no-sending --session-id " + session, started).output,
              AllOf(HasSubstr("session           " + session), ContainsRegex("broadcast +1 "),
                    ContainsRegex("stored +0 "), ContainsRegex("for support +3 ")));
  EXPECT_THAT(query("ItemDatabase.db", "SELECT json FROM Items"), IsEmpty());
  const auto kept = query("SupportDatabase.db", envelope);
  EXPECT_THAT(kept, ElementsAre(MatchesRegex("[0-9A-F-]{36}.0A1B.*89AB")));

  const auto run =
      play(inData() + deadServer + "--no-support --session-id " + session, started).output;
  EXPECT_THAT(run, AllOf(ContainsRegex("for support +0 "), ContainsRegex("sent +0 ")));
  EXPECT_EQ(query("SupportDatabase.db", envelope), kept);
  EXPECT_EQ(query("ItemDatabase.db", envelope), kept);
  EXPECT_THAT(test::contentOf(data("qel-sample-host.log")),
              ContainsRegex("sending CIP data has failed.* at 127.0.0.1:1 failed: "));

  play(inData() + deadServer + "--installation-id 'office 4'", started);
  EXPECT_THAT(query("ItemDatabase.db", envelope).back(), StartsWith("office 4|"));
}

TEST_F(SessionTest, SaysThatAFloodEndedStorage) {
  std::string flood;
  for (int i = 0; i < 30'000; ++i) {
    flood += "{\"notify\": \"onHelpAction\", \"name\": \"flood\", \"details\": {}}\n";
  }
  const auto run = play(inData() + deadServer, flood);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, ContainsRegex("broadcast +30000 "));
  EXPECT_THAT(run.errors, HasSubstr("Storage has ended before the session did"));
}

TEST_F(SessionTest, SaysThatTheSendingDatabaseIsFull) {
  EXPECT_EQ(play(inData() + "--no-sending").status, 0);
  query("ItemDatabase.db", "INSERT INTO Items(json) VALUES (zeroblob(30720000))");
  const auto run = play(inData() + deadServer);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("ItemDatabase.db has reached its largest size"));
}

TEST_F(SessionTest, LeavesADirectoryInUseToItsUser) {
  play(inData() + deadServer, started);
  const auto rows = [this] {
    std::vector<std::string> all;
    for (const char* database : {"ItemDatabase.db", "SupportDatabase.db"}) {
      for (const char* table : {"Items", "Environments"}) {
        const auto some = query(database, std::string("SELECT * FROM ") + table);
        all.insert(all.end(), some.begin(), some.end());
      }
    }
    return all;
  };
  const auto before = rows();
  EXPECT_THAT(before, SizeIs(Gt(4)));
  const qel::db::sql::SqlDatabaseAdapter user(data("ItemDatabase.db"));
  const auto second = play(inData() + deadServer + "--retention 0", started);
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.errors, "qel-sample-host: \"" + directory_.text() +
                               "\" is in use by another instance of the program\n");
  EXPECT_EQ(rows(), before);
}

TEST_F(SessionTest, SaysWhatTheTranscriptSaysWhereItCannotBegin) {
  const std::string tests = QEL_SOURCE_DIR "/tests/tools/sample-host";
  setenv("PATH", (QEL_SAMPLE_HOST_DIRECTORY ":" + std::string(getenv("PATH"))).c_str(), 1);
  setenv("DIR", directory_.text().c_str(), 1);
  setenv("TESTS", tests.c_str(), 1);
  const auto expected = test::contentOf(tests + "/transcript.txt");
  EXPECT_EQ(test::replay(expected, test::outcomeOf), expected);
  EXPECT_TRUE(std::filesystem::is_empty(directory_.path()));
}

}  // namespace
}  // namespace qel::samplehost
