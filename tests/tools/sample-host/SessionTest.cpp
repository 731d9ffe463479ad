// Runs the program itself.

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/Process.h"
#include "tests/support/Query.h"

namespace qel::samplehost {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

struct Outcome {
  std::string output;
  int status;
  std::string errors;
};

class SessionTest : public testing::Test {
 protected:
  std::filesystem::path data(const std::string& name) const { return directory_.path() / name; }
  std::string inData() const { return " --directory " + directory_.text() + " "; }

  static Outcome play(const std::string& arguments, const std::string& script = "") {
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

constexpr const char* script = R"({"notify": "onHelpAction", "name": "search", "details": {}}

{"join": true}
{"stopSending": true}
{"notify": "onGeneralAction", "category": "Plan", "subcategory": "Print", "event": "Done", "details": {"pages": "\u0000'"}}
{"wait": 0.001}
{"startSending": true}
)";

/// Without what the client adds by itself.
constexpr const char* scriptedItems =
    "SELECT json_extract(json, '$.Category'), json_extract(json, '$.Details'),"
    " json_extract(json, '$.InstallationId'), json_extract(json, '$.SessionId') FROM Items"
    " WHERE json_extract(json, '$.Category') NOT IN ('CIP', 'MemoryUsage') ORDER BY ID";

TEST_F(SessionTest, StoresWhatTheScriptBroadcastsInBothDatabases) {
  const auto run =
      play(inData() + deadServer + "--user ann --installation-id 'office 4' --secret-file " +
               test::write(data("secret"), "s3cr3t-w0rd\n").string() +
               " --session-id 0a1b2c3d-0000-4000-8000-0123456789ab",
           script);
  EXPECT_EQ(run.status, 0) << run.errors;
  for (const char* const database : {"ItemDatabase.db", "SupportDatabase.db"}) {
    EXPECT_THAT(
        query(database, scriptedItems),
        ElementsAre("Help||office 4|0A1B2C3D-0000-4000-8000-0123456789AB",
                    R"(Plan|{"pages":"\u0000'"}|office 4|0A1B2C3D-0000-4000-8000-0123456789AB)"));
    EXPECT_THAT(query(database,
                      "SELECT json FROM Environments WHERE json_extract(json, '$.OS.Name') <> ''"
                      " AND json_extract(json, '$.Hardware.CPU') <> ''"
                      " AND json_extract(json, '$.Hardware.Memory.Total') LIKE '% kB'"
                      " AND json LIKE '%qel-sample-host%'"),
                SizeIs(1));
  }
  const auto stored = query("ItemDatabase.db",
                            "SELECT count(*) FROM (SELECT ID FROM Items UNION ALL"
                            " SELECT ID FROM Environments)")
                          .front();
  EXPECT_THAT(run.output,
              AllOf(HasSubstr("session           0A1B2C3D-0000-4000-8000-0123456789AB"),
                    ContainsRegex("broadcast +2 "), ContainsRegex("stored +" + stored + " "),
                    ContainsRegex("sent +0 "), ContainsRegex("left +" + stored + " ")));
  const auto log = test::contentOf(data("qel-sample-host.log"));
  EXPECT_THAT(log, ContainsRegex("sending CIP data has failed.* at 127.0.0.1:1 failed: "));
  EXPECT_THAT(run.output + run.errors + log, Not(HasSubstr("s3cr3t-w0rd")));
}

TEST_F(SessionTest, StoresOnlyWhatItIsAllowedToAndKeepsTheInstallation) {
  const std::string started = R"({"notify": "onApplicationStarted", "text": "x"})";
  const std::string installation =
      "SELECT json_extract(json, '$.InstallationId') FROM Environments";
  EXPECT_THAT(play(inData() + "--no-sending", started).output,
              AllOf(ContainsRegex("stored +0 "), ContainsRegex("for support +3 ")));
  EXPECT_THAT(query("ItemDatabase.db", "SELECT json FROM Items"), IsEmpty());
  const auto kept = query("SupportDatabase.db", installation);
  EXPECT_THAT(kept, ElementsAre(testing::MatchesRegex("[0-9A-F-]{36}")));

  EXPECT_THAT(play(inData() + deadServer + "--no-support", started).output,
              ContainsRegex("for support +0 "));
  EXPECT_THAT(query("SupportDatabase.db", installation), SizeIs(1));
  EXPECT_EQ(query("ItemDatabase.db", installation), kept);
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
  EXPECT_THAT(query("ItemDatabase.db", "SELECT json FROM Items WHERE json LIKE '%CriticalLarge%'"),
              ElementsAre(HasSubstr("InsertingItems")));
}

TEST_F(SessionTest, SaysThatTheSendingDatabaseIsFull) {
  EXPECT_EQ(play(inData() + "--no-sending").status, 0);
  query("ItemDatabase.db", "INSERT INTO Items(json) VALUES (zeroblob(30720000))");
  const auto run = play(inData() + deadServer);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("ItemDatabase.db has reached its largest size"));
}

TEST_F(SessionTest, SaysInALineWhyItCannotBegin) {
  struct Case {
    std::string arguments;
    int status;
    const char* fault;
  };
  const std::vector<Case> cases{
      {"", 2, "--directory DIR is required"},
      {"--directory /nowhere/at/all", 2, "there is no directory /nowhere/at/all"},
      {inData() + "--session /tmp", 2, "/tmp: cannot be read"},
      {inData() + "--server localhost", 2, "--server"},
      {inData() + "--user x --secret-file /nowhere", 2, "--secret-file: cannot read /nowhere"},
      {inData() + "--user x --secret-file /tmp", 2, "--secret-file: cannot read /tmp"},
      {inData() + "--user x", 2, "--user and --secret-file go together"},
      {inData() + "--user a:b", 2, "--user: a name with a colon cannot be sent"},
      {inData() + "--ca /dev/null", 2, "--ca: cannot read /dev/null"},
      {inData() + "--session-id 12", 2, "--session-id: \"12\" is not a GUID"},
      {inData(), 2, "standard input:2: field \"name\" is missing"},
      {"--no-sending --session /dev/null --directory /proc", 1, "/proc"},
  };
  for (const auto& [arguments, status, fault] : cases) {
    const auto run = play(arguments, "{\"wait\": 0}\n{\"notify\": \"onBcfAction\"}\n");
    EXPECT_EQ(run.status, status) << arguments;
    EXPECT_THAT(run.errors, AllOf(HasSubstr("qel-sample-host: "), HasSubstr(fault))) << arguments;
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory_.path()));

  const qel::db::sql::SqlDatabaseAdapter inUse(data("ItemDatabase.db"));
  EXPECT_THAT(play(inData()).errors, AllOf(HasSubstr(directory_.text()), HasSubstr("in use")));
}

TEST_F(SessionTest, EndsInGoodOrderWhenInterrupted) {
  test::Process program(QEL_SAMPLE_HOST " --no-sending" + inData(), R"({"wait": 3600})");
  while (!std::filesystem::exists(data("installation-id"))) {
    std::this_thread::yield();
  }
  program.terminate();
  EXPECT_THAT(program.readUntil(EOF), HasSubstr("until the session was interrupted"));
  EXPECT_EQ(program.join(), 0) << program.errors();
}

}  // namespace
}  // namespace qel::samplehost
