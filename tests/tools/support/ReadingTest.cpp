#include <fstream>

#include <nlohmann/json.hpp>

#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/Files.h"
#include "tests/support/Query.h"
#include "tests/tools/support/Recorded.h"

namespace qel::support {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ReadingTest : public Recorded {
 protected:
  /// In the support database a crash and a run that was not ended; for sending also another one.
  void recordSessions() {
    recordForSupport(
        {{environment(firstSession, "09:30:00.000"), Table::Environments},
         {event(firstSession, "09:30:01.000", "Application|Started|menu"), Table::Items},
         {event(firstSession, "09:31:02.500", "Command|Started|Draw",
                R"({"ID": "d\u001b[31m", "Location": "grip"})"),
          Table::Items},
         {event(firstSession, "10:35:00.000", "Application|Crashed|boom"), Table::Items},
         {event(secondSession, "11:00:00.000", "Help|Action|search"), Table::Items}});
    recordForSending(items({event(secondSession, "11:00:00.000", "Help|Action|search"),
                            event(sentLater, "08:00:00.000", "Application|Stopped|menu")}));
  }

  void makeManyRows(int count) {
    std::vector<std::string> texts(static_cast<std::size_t>(count),
                                   event(firstSession, "09:30:00.000", "Help|Action|search"));
    recordForSupport(items(texts));
    endClients();
  }

  void overwrite(std::streamoff from, std::size_t bytes) const {
    std::fstream damaged(file("SupportDatabase.db"),
                         std::ios::in | std::ios::out | std::ios::binary);
    damaged.seekp(from);
    damaged << std::string(bytes, '\xff');
  }

  std::int64_t eventsListed(const Outcome& run) const {
    return json::parse(run.output).at(0).at("events");
  }

  const std::string sentLater = "0A1B2C3D-0000-4000-8000-000000000003";
};

TEST_F(ReadingTest, listsSessionsOfBothDatabasesWhileClientsRun) {
  recordSessions();
  const auto sessions = json::parse(run("sessions " + place() + " --json").output);
  std::vector<std::string> seen;
  for (const auto& session : sessions) {
    seen.push_back(session.at("session").get<std::string>().substr(35) + ' ' +
                   session.at("end").get<std::string>() + ' ' + session.at("events").dump() + ' ' +
                   session.at("lengthInSeconds").dump() + ' ' +
                   session.at("file").get<std::string>());
  }
  EXPECT_THAT(seen, testing::ElementsAre("3 stopped 1 0.0 ItemDatabase.db",
                                         "1 crashed 3 3900.0 SupportDatabase.db",
                                         "2 unknown 1 0.0 SupportDatabase.db"));
  EXPECT_THAT(
      run("sessions " + place()).output,
      ContainsRegex("0001 +2026-11-21 09:30:00 +2026-11-21 10:35:00 +1 h 05 min +3 +crashed"));
}

TEST_F(ReadingTest, makesDoWithEitherDatabase) {
  recordForSending({{environment(firstSession, "09:30:00.000"), Table::Environments}});
  EXPECT_EQ(json::parse(run("sessions " + place() + " --json").output).at(0).at("environments"), 1);
  endClients();
  std::filesystem::remove(file("ItemDatabase.db"));
  recordForSupport(items({event(secondSession, "11:00:00.000", "Help|Action|search")}));
  EXPECT_THAT(run("show " + place() + " --session last").output, HasSubstr("Action: search"));
}

TEST_F(ReadingTest, showsASessionAsAskedFor) {
  recordSessions();
  const std::string first = "show " + place() + " --session " + firstSession;
  EXPECT_THAT(run(first).output,
              AllOf(ContainsRegex("09:30:00.000 +Environment +Operating system = Debian <12>\n"
                                  "09:30:01.000 +Application +Started: menu\n"),
                    HasSubstr("ID = d\\u001b[31m; Location = grip")));
  EXPECT_THAT(run(first + " --category command").output, Not(HasSubstr("Application")));
  EXPECT_THAT(run(first + " --since '2026-11-21 09:31'").output,
              AllOf(Not(HasSubstr("09:30:01")), HasSubstr("09:31:02"), HasSubstr("10:35")));
  EXPECT_THAT(run("show " + place() + " --session last").output, HasSubstr(secondSession));
  const auto records = json::parse(
      run("show " + place() + " --json --session '{0a1b2c3d-0000-4000-8000-000000000001}'").output);
  EXPECT_EQ(records.at(2).at("Details").at("ID"), "d\u001b[31m");
}

TEST_F(ReadingTest, keepsToTheWidthOfTheTerminal) {
  recordSessions();
  for (const std::size_t columns : {40, 80, 120}) {
    for (const std::string& command :
         {std::string("sessions "), "show --session " + firstSession + ' ',
          std::string("stats ")}) {
      const auto said = run(command + place(), "env COLUMNS=" + std::to_string(columns));
      EXPECT_EQ(said.status, 0) << said.errors;
      std::istringstream lines(said.output);
      for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(line.size() <= columns || line.starts_with("Session ")) << command << line;
      }
    }
  }
}

TEST_F(ReadingTest, coloursOnlyTerminalsThatWantIt) {
  recordSessions();
  const auto colours = [&](const std::string& environment) {
    test::Process terminal("env " + environment + " script -qec '" + QEL_SUPPORT + " sessions " +
                           place() + "' /dev/null");
    return terminal.readUntil(EOF).find("\033[1;31mcrashed") != std::string::npos;
  };
  EXPECT_TRUE(colours("NO_COLOR= TERM=xterm"));
  EXPECT_FALSE(colours("NO_COLOR=1 TERM=xterm"));
  EXPECT_FALSE(colours("NO_COLOR= TERM=dumb"));
  EXPECT_THAT(run("sessions " + place(), "env NO_COLOR= TERM=xterm").output,
              Not(HasSubstr("\033")));
}

TEST_F(ReadingTest, tellsWhatWaitsAndWhatWasLost) {
  recordSessions();
  const std::string marker = event(secondSession, "11:00:01.000", "CIP|Database|CriticalLarge");
  recordForSupport(items({marker}));
  recordForSending(items({marker, event(secondSession, "11:00:02.000", "CIP|SendingItems|Exception",
                                        R"({"Message": "no route"})")}));
  test::write(file("ItemDatabase.db.corrupt-20261120T000000Z"), "");
  EXPECT_THAT(run("stats " + place()).output,
              AllOf(HasSubstr("4 rows wait to be sent"), HasSubstr(" in 1 package."),
                    HasSubstr("had reached 30,720,000 bytes"), HasSubstr("It says: no route"),
                    HasSubstr("ItemDatabase.db.corrupt-20261120T000000Z: the client found")));
  const auto statistics = json::parse(run("stats " + place() + " --json").output);
  EXPECT_EQ(statistics.at("markers").at(0).at("count"), 1) << "one marker, stored twice";
  EXPECT_EQ(statistics.at("files").at(1).at("categories"),
            json({{"Application", 1}, {"CIP", 2}, {"Help", 1}}));
}

TEST_F(ReadingTest, readsAroundDamage) {
  constexpr int rows = 2000;
  makeManyRows(rows);
  const auto size = std::filesystem::file_size(file("SupportDatabase.db"));
  overwrite(50 * 4096, 4096);
  overwrite(90 * 4096, 3 * 4096);
  auto listed = run("sessions " + place() + " --json");
  EXPECT_EQ(listed.status, 0);
  EXPECT_THAT(listed.errors, ContainsRegex("^qel-support: warning: SupportDatabase.db: the file is "
                                           "damaged: up to [0-9]+ rows of Items are skipped\n$"));
  EXPECT_GT(eventsListed(listed), rows * 9 / 10);
  EXPECT_LT(eventsListed(listed), rows);

  std::filesystem::resize_file(file("SupportDatabase.db"), size / 2);
  listed = run("sessions " + place() + " --json");
  EXPECT_EQ(listed.status, 0);
  EXPECT_GT(eventsListed(listed), rows * 4 / 10);

  std::filesystem::resize_file(file("SupportDatabase.db"), 0);
  EXPECT_EQ(run("sessions " + place()).output, "no sessions\n");
  test::write(file("SupportDatabase.db"), std::string(5000, 'x'));
  listed = run("sessions " + place());
  EXPECT_EQ(listed.status, 1);
  EXPECT_THAT(listed.errors, HasSubstr("SupportDatabase.db: file is not a database\n"));
}

TEST_F(ReadingTest, comesToAnEndWhereIdsAreDamaged) {
  makeManyRows(500);
  test::query(file("SupportDatabase.db"),
              "INSERT INTO Items(ID, json) VALUES (1152921504606846976, '')");
  const auto size = std::filesystem::file_size(file("SupportDatabase.db"));
  overwrite(static_cast<std::streamoff>(size) - 2 * 4096, 2 * 4096);
  EXPECT_GT(eventsListed(run("sessions " + place() + " --json")), 400);
}

TEST_F(ReadingTest, skipsRowsThatNoClientStores) {
  recordForSupport(items({"no json", R"({"no": "session"})", "[]",
                          event(firstSession, "09:30:00.000", "Help|Action|search")}));
  const auto listed = run("sessions " + place() + " --json");
  EXPECT_EQ(eventsListed(listed), 1);
  EXPECT_THAT(listed.errors, HasSubstr("3 rows of Items hold no record of a client"));
}

TEST_F(ReadingTest, readsACopyWhereAWriteWasBrokenOff) {
  makeManyRows(500);
  const auto source = elsewhere("SupportDatabase.db");
  std::filesystem::copy(file("SupportDatabase.db"), source);
  {
    db::sql::SqlDatabaseAdapter writer(source);
    writer.execute("PRAGMA cache_size = 1");
    const auto transaction = writer.beginTransaction();
    writer.execute("UPDATE Items SET json = 'x' || json");
    for (const char* const suffix : {"", "-journal"}) {
      std::filesystem::copy_file(source.string() + suffix, file("SupportDatabase.db") += suffix,
                                 std::filesystem::copy_options::overwrite_existing);
    }
  }
  std::filesystem::permissions(place(), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  const auto listed =
      run("sessions " + place() + " --json", "env TMPDIR=" + elsewhere("").string());
  EXPECT_EQ(eventsListed(listed), 500);
  EXPECT_THAT(listed.errors, HasSubstr("a private copy of it was read"));
  for (const auto& left : std::filesystem::directory_iterator(elsewhere(""))) {
    EXPECT_FALSE(left.is_directory()) << left;
  }
  std::filesystem::permissions(place(), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
}

TEST_F(ReadingTest, leavesFilesInWriteAheadModeAlone) {
  makeManyRows(5);
  db::sql::SqlDatabaseAdapter(file("SupportDatabase.db")).execute("PRAGMA journal_mode = WAL");
  EXPECT_EQ(eventsListed(run("sessions " + place() + " --json")), 5);
}

TEST_F(ReadingTest, saysWhenAnotherProgramKeepsADatabaseLocked) {
  makeManyRows(5);
  db::sql::SqlDatabaseAdapter other(file("SupportDatabase.db"));
  other.execute("BEGIN EXCLUSIVE");
  const auto listed = runFreely("sessions " + place());
  EXPECT_EQ(listed.status, 1);
  EXPECT_THAT(listed.errors, HasSubstr("is locked by another program"));
  other.execute("ROLLBACK");
}

TEST_F(ReadingTest, answersWhatCannotBeDoneWithOneLine) {
  recordSessions();
  const std::vector<std::pair<std::string, std::string>> complaints{
      {"", "a command is missing (--help lists them)"},
      {"frob", "unknown command \"frob\" (--help lists them)"},
      {"sessions", "DIR is missing (--help tells what it is)"},
      {"sessions /nowhere", "there is no directory /nowhere"},
      {"stats " + elsewhere("").string(),
       elsewhere("").string() + " holds neither SupportDatabase.db nor ItemDatabase.db"},
      {"show " + place(), "--session ID|last is required"},
      {"show " + place() + " --session 5", "--session: 5 is neither a session's ID nor \"last\""},
      {"show " + place() + " --session last --since noon",
       "--since: noon is no time in UTC such as 2026-11-21 or \"2026-11-21 09:30:05\""},
      {"report " + place() + " --output x --session 0A1B2C3D-0000-4000-8000-000000000009",
       "there is no session 0A1B2C3D-0000-4000-8000-000000000009 in " + place() +
           " (the command sessions lists those there are)"}};
  for (const auto& [arguments, complaint] : complaints) {
    const auto said = run(arguments);
    EXPECT_EQ(said.errors, "qel-support: " + complaint + '\n');
    EXPECT_EQ(said.status, 2) << arguments;
    EXPECT_THAT(said.output, IsEmpty());
  }
  EXPECT_EQ(run("stats " + place() + " >/dev/full").status, 1);
  EXPECT_THAT(run("--help").output, StartsWith("Usage: qel-support COMMAND DIR [options]\n"));
}

}  // namespace
}  // namespace qel::support
