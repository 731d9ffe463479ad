#include <fstream>

#include <nlohmann/json.hpp>

#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/Files.h"
#include "tests/support/Query.h"
#include "tests/tools/support/Recorded.h"

namespace qel::support {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

const std::string listing = "qel-support sessions $DIR --json";

std::string help(const std::string& session) {
  return event(session, "11:00:00.000", {"Help", "Action", "search"});
}

class ReadingTest : public Recorded {
 protected:
  void makeManyRows(std::size_t count) {
    recordForSupport(std::vector<std::string>(count, help(firstSession)));
    endClients();
  }

  void overwrite(std::streamoff from, std::size_t bytes) const {
    std::fstream damaged(file("SupportDatabase.db"),
                         std::ios::in | std::ios::out | std::ios::binary);
    damaged.seekp(from);
    damaged << std::string(bytes, '\xff');
  }

  static std::int64_t eventsListed(const Outcome& run) {
    return nlohmann::json::parse(run.output).at(0).at("events");
  }
};

/// While the clients run.
TEST_F(ReadingTest, saysWhatTheTranscriptSays) {
  const std::string marker =
      event(secondSession, "11:00:01.000", {"CIP", "Database", "CriticalLarge"});
  recordForSupport({environment(firstSession, "09:30:00.000")}, Table::Environments);
  recordForSupport({event(firstSession, "09:30:01.000", {"Application", "Started", "menu"}),
                    event(firstSession, "09:31:02.500", {"Command", "Started", "Draw"},
                          R"({"ID": "d\u001b[31m", "Location": "grip"})"),
                    event(firstSession, "10:35:00.000", {"Application", "Crashed", "boom"}),
                    event(firstSession, "noon", {"Help", "Action", "search"}),
                    R"({"SessionId": ")" + firstSession + R"(", "broken off)", help(secondSession),
                    marker, "no json", R"({"no": "session"})", "[]"});
  recordForSending({event("0A1B2C3D-0000-4000-8000-000000000003", "08:00:00.000",
                          {"Application", "Stopped", "menu"}),
                    help(secondSession), marker,
                    event(secondSession, "11:00:02.000", {"CIP", "SendingItems", "Exception"},
                          R"({"Message": "no route"})")});
  test::write(file("ItemDatabase.db.corrupt-20261120T000000Z"), "");

  const auto expected = test::contentOf(QEL_SOURCE_DIR "/tests/tools/support/transcript.txt");
  EXPECT_EQ(test::replay(expected, [this](const auto& command) { return run(command); }), expected);
}

TEST_F(ReadingTest, makesDoWithTheSendingDatabase) {
  recordForSending({help(firstSession)});
  EXPECT_EQ(eventsListed(run(listing)), 1);
}

TEST_F(ReadingTest, readsAroundDamage) {
  constexpr int rows = 2000;
  makeManyRows(rows);
  const auto size = std::filesystem::file_size(file("SupportDatabase.db"));
  overwrite(50 * 4096, 4096);
  overwrite(90 * 4096, 3 * 4096);
  auto listed = run(listing);
  EXPECT_EQ(listed.status, 0);
  EXPECT_THAT(listed.errors, ContainsRegex("^qel-support: warning: SupportDatabase.db: the file is "
                                           "damaged: up to [0-9]+ rows of Items are skipped\n$"));
  EXPECT_GT(eventsListed(listed), rows * 9 / 10);
  EXPECT_LT(eventsListed(listed), rows);

  std::filesystem::resize_file(file("SupportDatabase.db"), size / 2);
  EXPECT_GT(eventsListed(run(listing)), rows * 4 / 10);

  std::filesystem::resize_file(file("SupportDatabase.db"), 0);
  EXPECT_EQ(run("qel-support sessions $DIR").output, "no sessions\n");
  test::write(file("SupportDatabase.db"), std::string(5000, 'x'));
  listed = run(listing);
  EXPECT_EQ(listed.status, 1);
  EXPECT_THAT(listed.errors, HasSubstr("SupportDatabase.db: file is not a database\n"));
}

TEST_F(ReadingTest, comesToAnEndWhereIdsAreDamaged) {
  makeManyRows(500);
  test::query(file("SupportDatabase.db"),
              "INSERT INTO Items(ID, json) VALUES (1152921504606846976, '')");
  const auto size = std::filesystem::file_size(file("SupportDatabase.db"));
  overwrite(static_cast<std::streamoff>(size) - 2 * 4096, 2 * 4096);
  EXPECT_GT(eventsListed(run(listing)), 400);
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
  const auto listed = run("env TMPDIR=$OUT " + listing);
  EXPECT_EQ(eventsListed(listed), 500);
  EXPECT_THAT(listed.errors, HasSubstr("a private copy of it was read"));
  // A copy goes with whatever ends the program; 128 and the signal's number tell of that.
  for (const std::string ending :
       {"head -c 1 <$OUT/pipe >$OUT/byte; wait $!; echo $((128 + 13 - $?))",
        "exec 3<$OUT/pipe; read -r line <&3; kill -TERM $!; wait $!; echo $((128 + 15 - $?))",
        "exec 3<$OUT/pipe; read -r line <&3; kill -KILL $!; wait $!; echo $((128 + 9 - $?))"}) {
    EXPECT_EQ(run("sh -c 'mkfifo $OUT/pipe; TMPDIR=$OUT qel-support show $DIR --session last "
                  "--json 2>$OUT/errors >$OUT/pipe & " +
                  ending + "; rm $OUT/pipe'")
                  .output,
              "0\n");
  }
  for (const auto& left : std::filesystem::directory_iterator(elsewhere(""))) {
    EXPECT_FALSE(left.is_directory()) << left;
  }
}

TEST_F(ReadingTest, leavesFilesInWriteAheadModeAlone) {
  makeManyRows(5);
  db::sql::SqlDatabaseAdapter(file("SupportDatabase.db")).execute("PRAGMA journal_mode = WAL");
  EXPECT_EQ(eventsListed(run(listing)), 5);
}

TEST_F(ReadingTest, saysWhenAnotherProgramKeepsADatabaseLocked) {
  makeManyRows(5);
  db::sql::SqlDatabaseAdapter other(file("SupportDatabase.db"));
  other.execute("BEGIN EXCLUSIVE");
  const auto listed = runFreely(listing);
  EXPECT_EQ(listed.status, 1);
  EXPECT_THAT(listed.errors, HasSubstr("is locked by another program"));
}

}  // namespace
}  // namespace qel::support
