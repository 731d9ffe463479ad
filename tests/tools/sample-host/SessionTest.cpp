// Runs the program itself.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/wait.h>

#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::samplehost {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator(stream), {}};
}

void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

class SessionTest : public testing::Test {
 protected:
  SessionTest() { std::filesystem::create_directory(data()); }

  std::filesystem::path data() const { return directory_.path() / "data"; }
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }
  std::string inData() const { return "--directory " + data().string() + " "; }

  /// What a shell command that runs the program came to.
  Outcome shell(const std::string& command) const {
    const auto status =
        std::system(  // NOLINT(cert-env33-c,bugprone-command-processor): the tests' own commands
            ("{ " + command + "\n} >" + file("out").string() + " 2>" + file("err").string())
                .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(file("out")),
            contentOf(file("err"))};
  }

  Outcome play(const std::string& arguments, const std::string& script) const {
    write(file("script.jsonl"), script);
    return shell(QEL_SAMPLE_HOST " " + arguments + " <" + file("script.jsonl").string());
  }

  /// The first column of what a query yields.
  std::vector<std::string> query(const std::string& database, const std::string& statement) const {
    qel::db::sql::SqlDatabaseAdapter adapter(data() / database);
    std::vector<std::string> column;
    for (auto& row : adapter.execute(statement).result()) {
      column.push_back(row.front());
    }
    return column;
  }

 private:
  test::TemporaryDirectory directory_;
};

/// Nobody listens there.
constexpr const char* deadServer = "--server 127.0.0.1:1 --exit-deadline 2 ";

constexpr const char* everyNotification = R"({"webUpdate": {"success": 3, "corrupt": 1}}
{"notify": "onApplicationStarted", "text": "cold"}
{"notify": "onBcfAction", "name": "import", "details": {"topics": "7"}}
{"notify": "onHelpAction", "name": "search", "details": {}}

{"notify": "onProjectManagerAction", "name": "open", "details": {}}
{"join": true}
{"notify": "onGraphicAction", "name": "zoom", "details": {"factor": "2"}}
{"notify": "onGeneralAction", "category": "Plan", "subcategory": "Print", "event": "Done", "details": {"pages": "\u0000'"}}
{"notify": "onApplicationAsserted", "text": "view", "assert": {"type": 1, "message": "m", "function": "f", "file": "a/b", "line": 12}}
{"wait": 0.001}
{"stopSending": true}
{"startSending": true}
{"notify": "onApplicationCrashed", "text": "heap", "code": -1073741819}
{"notify": "onApplicationStopped", "text": "user"}
)";

/// Without what the client adds by itself.
constexpr const char* scriptedItems =
    "SELECT json_extract(json, '$.Category')"
    " || ifnull('|' || json_extract(json, '$.Subcategory'), '')"
    " || ifnull('|' || json_extract(json, '$.Event'), '')"
    " || ifnull('|' || json_extract(json, '$.Details'), '') FROM Items"
    " WHERE json_extract(json, '$.Category') NOT IN ('CIP', 'MemoryUsage')"
    " AND json_extract(json, '$.SessionId') = '0A1B2C3D-0000-4000-8000-0123456789AB'"
    " AND json_extract(json, '$.InstallationId') = 'office 4' ORDER BY ID";

TEST_F(SessionTest, StoresWhatTheScriptBroadcastsInBothDatabases) {
  write(file("secret"), "s3cr3t-w0rd\n");
  const auto run =
      play(inData() + deadServer + "--user ann --secret-file " + file("secret").string() +
               " --installation-id 'office 4'"
               " --session-id 0a1b2c3d-0000-4000-8000-0123456789ab",
           everyNotification);
  EXPECT_EQ(run.status, 0) << run.errors;

  for (const char* const database : {"ItemDatabase.db", "SupportDatabase.db"}) {
    EXPECT_THAT(
        query(database, scriptedItems),
        ElementsAre("Application|Started|cold|{\"Exception Code\":\"0\"}",
                    HasSubstr("User|Location|"),
                    "WebUpdate|Reports|{\"corrupt package\":\"1\",\"success\":\"3\"}",
                    "BCF|Action|import|{\"topics\":\"7\"}", "Help|Action|search",
                    "Project Manager|Action|open", "Graphic|Action|zoom|{\"factor\":\"2\"}",
                    "Plan|Print|Done|{\"pages\":\"\\u0000'\"}",
                    "Application|Asserted|view|{\"Filename\":\"a/b\",\"Function Name\":\"f\","
                    "\"Line Number\":\"12\",\"Message\":\"m\",\"Type\":\"Precondition\"}",
                    "Application|Crashed|heap|{\"Exception Code\":\"3221225477\"}",
                    "Application|Stopped|user|{\"Exception Code\":\"0\"}"))
        << database;
  }
  EXPECT_THAT(query("SupportDatabase.db",
                    "SELECT json FROM Environments WHERE json_extract(json, '$.OS.Name') <> ''"
                    " AND json_extract(json, '$.Hardware.CPU') <> ''"
                    " AND json_extract(json, '$.Hardware.Memory.Total') LIKE '% kB'"
                    " AND json_extract(json, '$.CurrentActiveApplication.Name') ="
                    " 'qel-sample-host'"),
              SizeIs(1));

  const auto stored = query("ItemDatabase.db",
                            "SELECT (SELECT COUNT(*) FROM Items) + (SELECT COUNT(*) FROM"
                            " Environments)")
                          .front();
  EXPECT_THAT(run.output,
              AllOf(HasSubstr("session           0A1B2C3D-0000-4000-8000-0123456789AB"),
                    ContainsRegex("broadcast +9 "), ContainsRegex("stored +" + stored + " "),
                    ContainsRegex("sent +0 "), ContainsRegex("left +" + stored + " ")));
  const auto log = contentOf(data() / "qel-sample-host.log");
  EXPECT_THAT(log, HasSubstr("sending CIP data has failed"));
  EXPECT_THAT(run.output + run.errors + log, Not(HasSubstr("s3cr3t-w0rd")));
}

TEST_F(SessionTest, StoresOnlyWhatItIsAllowedToAndKeepsTheInstallation) {
  const std::string started = R"({"notify": "onApplicationStarted", "text": "x"})";
  const auto withoutSending = play(inData() + "--no-sending", started);
  EXPECT_EQ(withoutSending.status, 0) << withoutSending.errors;
  EXPECT_THAT(withoutSending.output,
              AllOf(ContainsRegex("stored +0 "), ContainsRegex("for support +3 ")));
  EXPECT_THAT(query("ItemDatabase.db", "SELECT json FROM Items"), IsEmpty());

  const auto withoutSupport = play(inData() + deadServer + "--no-support", started);
  EXPECT_EQ(withoutSupport.status, 0) << withoutSupport.errors;
  EXPECT_THAT(withoutSupport.output, ContainsRegex("for support +0 "));
  EXPECT_THAT(query("SupportDatabase.db", "SELECT json FROM Environments"), SizeIs(1));

  const std::string installation =
      "SELECT json_extract(json, '$.InstallationId') FROM Environments";
  const auto kept = query("SupportDatabase.db", installation);
  EXPECT_THAT(kept, ElementsAre(testing::MatchesRegex("[0-9A-F-]{36}")));
  EXPECT_EQ(query("ItemDatabase.db", installation), kept);
}

TEST_F(SessionTest, SaysThatAFloodEndedStorage) {
  std::string flood;
  for (int i = 0; i < 30'000; ++i) {
    flood += R"({"notify": "onHelpAction", "name": "flood", "details": {}})"
             "\n";
  }
  const auto run = play(inData() + deadServer, flood);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, ContainsRegex("broadcast +30000 "));
  EXPECT_THAT(run.errors, HasSubstr("Storage has ended before the session did"));
  EXPECT_THAT(query("ItemDatabase.db",
                    "SELECT json_extract(json, '$.Subcategory') FROM Items"
                    " WHERE json_extract(json, '$.Event') = 'CriticalLarge'"),
              ElementsAre("InsertingItems"));
}

TEST_F(SessionTest, SaysThatTheSendingDatabaseIsFull) {
  EXPECT_EQ(play(inData() + "--no-sending", "").status, 0);
  EXPECT_THAT(query("ItemDatabase.db",
                    "INSERT INTO Items(json) VALUES (zeroblob(30720000)) RETURNING 'filled'"),
              ElementsAre("filled"));
  const auto run = play(inData() + deadServer, "");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("ItemDatabase.db has reached its largest size"));
}

TEST_F(SessionTest, SaysWhyADirectoryCannotBeUsed) {
  const auto unwritable = play("--directory /proc", "");
  EXPECT_EQ(unwritable.status, 1);
  EXPECT_THAT(unwritable.errors, AllOf(HasSubstr("qel-sample-host: "), HasSubstr("/proc")));

  const qel::db::sql::SqlDatabaseAdapter inUse(data() / "ItemDatabase.db");
  const auto second = play(inData(), "");
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.errors, AllOf(HasSubstr(data().string()), HasSubstr("in use")));
}

TEST_F(SessionTest, RefusesBadInputBeforeItTouchesTheDirectory) {
  struct Case {
    std::string arguments;
    const char* fault;
  };
  const std::vector<Case> cases{
      {"", "--directory DIR is required"},
      {"--directory /nowhere/at/all", "there is no directory /nowhere/at/all"},
      {inData() + "--session /nowhere.jsonl", "--session: cannot read /nowhere.jsonl"},
      {inData() + "--session /tmp", "/tmp: cannot be read"},
      {inData() + "--server localhost", "--server"},
      {inData() + "--ca /nowhere.pem", "--ca: cannot read /nowhere.pem"},
      {inData() + "--secret-file /nowhere", "--secret-file: cannot read /nowhere"},
      {inData() + "--session-id 12", "--session-id: \"12\" is not a GUID"},
      {inData() + "--retention -1", "--retention"},
      {inData() + "--speed 0", "--speed"},
      {inData() + "--exit-deadline soon", "--exit-deadline"},
      {inData(), "standard input:2: field \"name\" is missing"},
  };
  for (const auto& [arguments, fault] : cases) {
    const auto run = play(arguments, "{\"wait\": 0}\n{\"notify\": \"onBcfAction\"}\n");
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_THAT(run.errors, AllOf(HasSubstr("qel-sample-host: "), HasSubstr(fault))) << arguments;
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
  }
  EXPECT_TRUE(std::filesystem::is_empty(data()));
}

TEST_F(SessionTest, EndsInGoodOrderWhenInterrupted) {
  write(file("script.jsonl"),
        "{\"notify\": \"onApplicationStarted\", \"text\": \"x\"}\n"
        "{\"join\": true}\n{\"wait\": 3600}\n");
  const auto run = shell(
      QEL_SAMPLE_HOST " --no-sending " + inData() + "--session " + file("script.jsonl").string() +
      " & program=$!; until [ -e " + (data() / "installation-id").string() +
      " ] || ! kill -0 $program; do sleep 0.02; done; kill -TERM $program; wait $program");
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_THAT(run.output, HasSubstr("until the session was interrupted"));
}

}  // namespace
}  // namespace qel::samplehost
