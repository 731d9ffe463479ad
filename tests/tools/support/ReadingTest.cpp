#include <fstream>

#include <nlohmann/json.hpp>

#include "tests/support/Query.h"
#include "tests/tools/support/Recorded.h"
#include "tools/collector/SqliteStore.h"

namespace qel::support {

using namespace testing;

/// Reading leaves $DIR as it is.
class ReadingTest : public Recorded {
 protected:
  void recordAndEnd(std::size_t rows) {
    recordForSupport(std::vector<std::string>(rows, help(firstSession)));
    endClients();
  }

  void overwrite(std::streamoff from, std::size_t bytes) const {
    std::fstream(support_, std::ios::in | std::ios::out | std::ios::binary).seekp(from)
        << std::string(bytes, '\xff');
  }

  std::string stateOfFiles() const {
    return run("sh -c 'ls -l --full-time $DIR; cksum $DIR/*'").output;
  }

  test::Outcome list() const {
    const auto before = stateOfFiles();
    auto listed = run("env TMPDIR=$OUT qel-support sessions $DIR --json");
    EXPECT_EQ(stateOfFiles(), before);
    return listed;
  }

  static std::int64_t eventsIn(const test::Outcome& listed) {
    return nlohmann::json::parse(listed.output).at(0).at("events");
  }

  const std::filesystem::path support_ = file("SupportDatabase.db");
};

TEST_F(ReadingTest, MatchesTheTranscriptWhileTheClientsRun) {
  const std::string marker =
      event(secondSession, "11:00:01.000", {"CIP", "Database", "CriticalLarge"});
  recordEnvironment();
  recordForSupport({event(firstSession, "09:30:01.000", {"Application", "Started", "menu"}),
                    event(firstSession, "09:31:02.500", {"Command", "Started", "Draw"},
                          R"({"ID": "d\u001b[31m", "Location": "grip"})"),
                    event(firstSession, "10:35:00.000", {"Application", "Crashed", "boom"}),
                    help(firstSession, "noon"),
                    R"({"SessionId": ")" + firstSession + R"(", "broken off)", help(secondSession),
                    marker, "no json", R"({"no": "session"})", "[]"});
  recordForSending({event("0A1B2C3D-0000-4000-8000-000000000003", "08:00:00.000",
                          {"Application", "Stopped", "menu"}),
                    help(secondSession), marker,
                    event(secondSession, "11:00:02.000", {"CIP", "SendingItems", "Exception"},
                          R"({"Message": "no route"})")});
  test::write(file("ItemDatabase.db.corrupt-20261120T000000Z"), "");
  const auto before = stateOfFiles();
  expectTranscript("support/reading.txt");
  EXPECT_EQ(stateOfFiles(), before);
}

TEST_F(ReadingTest, NeedsNoSupportDatabase) {
  recordForSending({std::string(1'000'000, ' '), help(firstSession)});
  EXPECT_EQ(eventsIn(list()), 1);
  EXPECT_THAT(run("qel-support stats $DIR").output, HasSubstr("1.0 MB in 2 packages."));
}

TEST_F(ReadingTest, SkipsDamage) {
  constexpr int rows = 2000;
  recordAndEnd(rows);
  const auto size = std::filesystem::file_size(support_);
  overwrite(50 * 4096, 4096);
  overwrite(90 * 4096, 3 * 4096);
  auto listed = list();
  EXPECT_EQ(listed.status, 0);
  EXPECT_THAT(listed.errors, ContainsRegex("^qel-support: warning: SupportDatabase.db: the file is "
                                           "damaged: up to [0-9]+ rows of Items are skipped\n$"));
  EXPECT_THAT(eventsIn(listed), AllOf(Gt(rows * 9 / 10), Lt(rows)));
  EXPECT_THAT(run("qel-support report $DIR --session last --output -").output,
              AllOf(HasSubstr("This page may be incomplete"), HasSubstr("the file is damaged")));

  std::filesystem::resize_file(support_, size / 2);
  EXPECT_GT(eventsIn(list()), rows * 4 / 10);
  std::filesystem::resize_file(support_, 0);
  EXPECT_EQ(list().output, "[]\n");
  test::write(support_, std::string(5000, 'x'));
  listed = list();
  EXPECT_EQ(listed.status, 1);
  EXPECT_THAT(listed.errors, HasSubstr("SupportDatabase.db: file is not a database\n"));
}

TEST_F(ReadingTest, EndsWhereIdsAreDamaged) {
  recordAndEnd(500);
  test::query(support_, "INSERT INTO Items(ID, json) VALUES (1152921504606846976, '')");
  const auto size = std::filesystem::file_size(support_);
  overwrite(static_cast<std::streamoff>(size) - 2 * 4096, 2 * 4096);
  EXPECT_GT(eventsIn(list()), 400);
}

TEST_F(ReadingTest, ReadsACopyAfterAnUnfinishedWriteAndRemovesIt) {
  recordAndEnd(500);
  const auto source = elsewhere("SupportDatabase.db");
  std::filesystem::copy(support_, source);
  {
    db::sql::SqlDatabaseAdapter writer(source);
    writer.execute("PRAGMA cache_size = 1");
    const auto transaction = writer.beginTransaction();
    writer.execute("UPDATE Items SET json = 'x' || json");
    run("sh -c 'cp $OUT/SupportDatabase.db* $DIR'");
  }
  const auto listed = list();
  EXPECT_EQ(eventsIn(listed), 500);
  EXPECT_THAT(listed.errors, HasSubstr("a private copy of it was read"));
  expectTranscript("support/ending.txt");
}

TEST_F(ReadingTest, SelectsRecordsAndFollowsThem) {
  setenv("TZ", "XYZ-05:30", 1);
  recordForSupport({event(firstSession, "20:00:01.000", {"Command", "Started", "Größe [a-z]*"}),
                    event(firstSession, "20:00:02.000", {"Graphic", "Action", "Fit"},
                          R"({"View": {"Name": ["\u00c9tage \"1\""]}})"),
                    event(firstSession, "20:01:00.000", {"MemoryUsage", "Total", "Runtime"},
                          R"({"Max": "8283750", "Min": "524288"})"),
                    help(secondSession, "21:00:00.000")});
  expectTranscript("support/selecting.txt");
  unsetenv("TZ");
}

TEST_F(ReadingTest, ReadsTheStoreOfACollector) {
  const auto second = help(secondSession);
  {
    collector::SqliteStore store(file("store.db"));
    const auto upload = [&](const std::string& environment, const std::string& events) {
      store.add({std::make_shared<collector::Upload>(R"({"version": "3.1", "environments": [)" +
                                                         environment + R"(], "events": [)" +
                                                         events + "]}",
                                                     "demo")},
                std::chrono::steady_clock::now() + std::chrono::minutes(1));
    };
    upload(help(firstSession, "09:00:00.000"), second + ',' + second + ",7");
    if (test::windowsPrograms() == nullptr) {  // Wine does not share memory with this process.
      const auto before = stateOfFiles();
      EXPECT_THAT(run("qel-support show $DIR/store.db --session last --json").output,
                  "[\n" + second + "\n]\n");
      EXPECT_EQ(stateOfFiles(), before);
    }
    upload("", help(firstSession, "12:00:00.000") + ',' +
                   event(firstSession, "12:00:01.000", {"Application", "Crashed", "boom"}));
  }
  const auto before = stateOfFiles();
  expectTranscript("support/store.txt");
  EXPECT_EQ(stateOfFiles(), before);
}

TEST_F(ReadingTest, LeavesFilesAloneThatAreInWriteAheadModeOrKeptLocked) {
  recordAndEnd(5);
  db::sql::SqlDatabaseAdapter(support_).execute("PRAGMA journal_mode = WAL");
  EXPECT_EQ(eventsIn(list()), 5);
  db::sql::SqlDatabaseAdapter other(support_);
  other.execute("PRAGMA journal_mode = DELETE");
  other.execute("BEGIN EXCLUSIVE");
  const auto listed = list();
  EXPECT_EQ(listed.status, 1);
  EXPECT_THAT(listed.errors, HasSubstr("is locked by another program"));
}

}  // namespace qel::support
