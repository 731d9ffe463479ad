#include <gmock/gmock.h>

#include "tests/support/Query.h"
#include "tests/tools/CommandTest.h"
#include "tests/tools/collector/Uploads.h"
#include "tools/collector/SqliteExecution.h"
#include "tools/collector/SqliteStore.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using namespace testing;

std::string nested(std::size_t depth) {
  return R"({"a":)" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + '}';
}

class StoreTest : public test::CommandTest {
 protected:
  void add(const std::string& body) const { SqliteStore(file_).add(uploadsOf(body), soon()); }
  std::vector<std::string> query(const std::string& columns) const {
    return test::query(file_, "SELECT " + columns);
  }

  /// What the store has of a body alone: table, or why it was refused, count and text.
  std::vector<std::string> storedOf(const std::string& body) const {
    std::filesystem::remove(file_);
    add(body);
    return query(
        "'environment', count, text FROM environments UNION ALL"
        " SELECT 'event', count, text FROM events UNION ALL"
        " SELECT reason, count, text FROM refused");
  }

  const std::filesystem::path file_ = file("störe.db");
};

TEST_F(StoreTest, KeepsRowsByteForByteAndRefusesPoisonRowsAlone) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
      {R"({"version": "3.1", "environments": [{"a":1},{"b":2}], "events": [{"c":[{}]}]})",
       {R"(environment|1|{"a":1})", R"(environment|1|{"b":2})", R"(event|1|{"c":[{}]})"}},
      {withEvents(R"({},bad,{"a":1},bad,[{}],{},"{}",{'a':1},{"a":1])"),
       {"event|2|{}", R"(event|1|{"a":1})", "row is no JSON object|2|bad",
        "row is no JSON object|1|[{}]", R"(row is no JSON object|1|"{}")",
        R"(row is no JSON object|1|{'a':1})", R"(row is no JSON object|1|{"a":1])"}},
      {withEvents("{\"\xff\":1},\xef\xbb\xbf{},{}\0x,{\"a\":\"\\ud800\"}"s),
       {"row is no JSON object|1|{\"\xff\":1}", "row is no JSON object|1|\xef\xbb\xbf{}",
        "row is no JSON object|1|{}\0x"s, R"(row is no JSON object|1|{"a":"\ud800"})"}},
      {withEvents(nested(64) + ',' + nested(65)),
       {"event|1|" + nested(64), "row nested too deeply|1|" + nested(65)}},
  };
  for (const auto& [body, rows] : cases) {
    EXPECT_THAT(storedOf(body), ElementsAreArray(rows));
  }
}

TEST_F(StoreTest, RefusesAsAWholeWhatIsNoPackage) {
  std::string rows = "{}";
  for (std::size_t row = 1; row < 100'000; ++row) {
    rows += ",{}";
  }
  EXPECT_THAT(storedOf(withEvents(rows)), ElementsAre("event|100000|{}"));
  for (const std::string& body : {
           withEvents(rows + ",{}"),
           R"({"version": "3.2", "events": [{}]})"s,
           R"({"version": "3.1", "events": [{}], "other": {"lost": [{}]}})"s,
           R"({"version": "3.1", "events": null, "environments": [{}], "events": [{"a":1}]})"s,
           R"({"version": "3.1", "events": [{}]} {})"s,
           R"({"version": "3.1"})" + "\0\xff'"s,
           withEvents(R"({},{"a":"broken)"),
           withEvents("{}]"),
           R"({"version": "3.1", "x": )" + std::string(500'000, '[') + std::string(500'000, ']') +
               '}',
       }) {
    EXPECT_THAT(storedOf(body), ElementsAre("no package|1|" + body));
  }
}

TEST_F(StoreTest, CountsATextAsOftenAsThePackageThatHoldsItMostForAllCollectors) {
  const std::string twice = withEvents(R"({"a":1},bad,{"a":1})");
  const std::string once =
      R"({"version": "3.1", "events": [{"a":1}], "environments": [{"a":1,"SessionId":"s"}]})";
  SqliteStore one(file_);
  SqliteStore other(file_);
  one.add(uploadsOf(once), soon());
  const auto first = query("id, received, user, text FROM events");
  for (const auto& package : {twice, twice, once}) {
    other.add(uploadsOf(package, "bob"), soon());
    one.add(uploadsOf(package), soon());
  }
  EXPECT_EQ(query("id, received, user, text FROM events"), first);
  EXPECT_THAT(query("count, user, text FROM events"), ElementsAre(R"(2|ada|{"a":1})"));
  EXPECT_THAT(query("count FROM environments"), ElementsAre("1"));
  EXPECT_THAT(query("count, user, text FROM refused"), ElementsAre("1|bob|bad"));
}

TEST_F(StoreTest, StoresNothingAfterTheDeadlineAndNeverWaitsForAReader) {
  SqliteStore store(file_);
  SqliteConnection other(file_, SqliteConnection::Missing::Fail);
  other.execute("BEGIN; SELECT * FROM events");
  store.add(uploadsOf(withEvents(R"({"beside":"a reader"})")), soon());
  other.execute("COMMIT; BEGIN IMMEDIATE");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_THROW(store.add(uploadsOf(withEvents("{}")), begin + 100ms), StoreError);
  EXPECT_THROW(store.add({}, begin + 200ms), StoreError);
  other.execute("COMMIT");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);

  std::string rows = "{}";
  for (int row = 0; row < 20'000; ++row) {
    rows += ",{\"a\":" + std::to_string(row) + "}";
  }
  const Uploads many = uploadsOf(withEvents(rows));
  EXPECT_THROW(store.add(many, std::chrono::steady_clock::now() + 5ms), StoreError);
  EXPECT_THAT(query("text FROM events"), ElementsAre(R"({"beside":"a reader"})"));
  store.add(many, soon());
  EXPECT_THAT(query("count(*) FROM events"), ElementsAre("20002"));
  EXPECT_GT(store.size().file + store.size().log, 1'000'000U);
  for (const char* const end : {"", "-wal", "-shm"}) {
    const auto rights = std::filesystem::status(file_.string() + end).permissions();
    EXPECT_EQ(rights, std::filesystem::perms(0600)) << end;
  }
}

TEST_F(StoreTest, UpgradesAStoreOfVersion0SoThatATextSentAgainIsStillCountedOnce) {
  expectTranscript("collector/version0.txt");
  add(R"({"version": "3.1", "events": [{"SessionId":"s"},bad], "environments": [{}]})");
  add("no package");
  EXPECT_THAT(query("id, received, count, user, session, installation, time, category,"
                    " subcategory, event, text FROM events"),
              ElementsAre(R"(7|2026-01-02T03:04:05.678Z|3||s|i|t|c|d|e|{"SessionId":"s"})"));
  EXPECT_THAT(query("id, count, text FROM environments"), ElementsAre("1|1|{}"));
  EXPECT_THAT(query("id, reason, text FROM refused"),
              ElementsAre("2|no package|bad", "3|no package|no package"));
  EXPECT_THAT(query("* FROM sessions"), ElementsAre("s"));
}

TEST_F(StoreTest, IsUpgradedCompletelyOrNotAtAll) {
  expectTranscript("collector/version0.txt");
  expectTranscript("collector/upgrade.txt");
  add(withEvents(R"({"SessionId":"s"})"));
  EXPECT_THAT(query("count(*), max(count), count(key) FROM events"), ElementsAre("30001|3|30001"));
}

TEST_F(StoreTest, LeavesFilesAloneThatAreNoStoreOrANewerOne) {
  const auto expectRefusal = [this](const std::string& reason) {
    const std::string before = test::contentOf(file_);
    try {
      const SqliteStore store(file_);
      ADD_FAILURE() << "accepted: " << reason;
    } catch (const StoreError& error) {
      EXPECT_THAT(error.what(), EndsWith(": " + reason));
    }
    EXPECT_EQ(test::contentOf(file_), before);
  };
  { const SqliteStore store(file_); }
  SqliteConnection(file_, SqliteConnection::Missing::Fail).execute("PRAGMA user_version = 3");
  expectRefusal("a newer version of the collector made it");
  std::filesystem::remove(file_);
  SqliteConnection(file_, SqliteConnection::Missing::Create).execute("CREATE TABLE events (a)");
  expectRefusal("it is another program's file");
  test::write(file_, std::string(5000, 'x'));
  expectRefusal("file is not a database");
}

TEST_F(StoreTest, RemovesOldRowsAlthoughTheClockWasWrongForAWhile) {
  SqliteStore store(file_);
  SqliteConnection(file_, SqliteConnection::Missing::Fail)
      .execute(
          "WITH n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 5000) INSERT INTO events"
          " (received, count, text, key) SELECT CASE WHEN i BETWEEN 1500 AND 3700 THEN '2999'"
          " WHEN i <= 4000 THEN '2020' ELSE '2021-02-03T04:05:06.700Z' END, 1, i, randomblob(32)"
          " FROM n; INSERT INTO refused (received, count, reason, text, key) VALUES ('2020', 1, '',"
          " '', '')");
  const std::chrono::system_clock::time_point limit(1612325106s + 700ms);  // that of 2021
  const auto stepsOfRemoval = [&store](std::chrono::system_clock::time_point before) {
    int steps = 1;
    for (; store.removeSome(before); ++steps) {
    }
    return steps;
  };
  EXPECT_EQ(stepsOfRemoval(limit), 5);
  EXPECT_THAT(query("count(*), min(text + 0), max(text + 0) FROM events GROUP BY received"),
              ElementsAre("1000|4001|5000", "2201|1500|3700"));
  EXPECT_THAT(query("* FROM refused"), IsEmpty());
  EXPECT_EQ(stepsOfRemoval(limit + 1ms), 5);
  EXPECT_THAT(query("count(*) FROM events"), ElementsAre("2201"));
}

TEST_F(StoreTest, FillsTheColumnsFromTheMembersOfATextAndLeavesTheTextAlone) {
  const std::string hostile = R"({"Category": "'); DROP TABLE events; --\u0000\n", "Event": 5,
      "Details": {"Timestamp": "inner"}, "Category": "second", "SessionId": null, "x": ")" +
                              std::string(1'000'000, 'x') + "\"}";
  const std::string common = R"({"InstallationId":"i","SessionId":"id","Timestamp":"t")";
  const std::string named = common + R"(,"Category":"c","Subcategory":"s","Event":"e"})";
  add(R"({"version": "3.1", "events": [)" + hostile + "," + named + R"(], "environments": [)" +
      common + R"(,"OS":{}}]})");
  EXPECT_THAT(
      query("category, subcategory, event, installation, session, time, text FROM events"),
      ElementsAre("'); DROP TABLE events; --\0\n||||||"s + hostile, "c|s|e|i|id|t|" + named));
  EXPECT_THAT(query("installation, session, time, text FROM environments"),
              ElementsAre("i|id|t|" + common + R"(,"OS":{}})"));
}

}  // namespace
}  // namespace qel::collector
