#include "tests/tools/collector/SqliteReaderTest.h"

#include "tests/support/Query.h"

namespace qel::collector {
namespace {

using namespace testing;

TEST_F(SqliteReaderTest, AnswersEachFigureWithEachFilter) {
  addSample();
  const Filter all;
  Filter week;
  week.from = "2026-01-05";
  week.until = "2026-01-11";
  Filter version;
  version.version = "2";
  Filter one;
  one.installation = "one";
  Filter crashed = week;
  crashed.end = "crashed";
  crashed.session = "a-a";
  Filter first;
  first.limit = 1;
  const std::string a = "{AA-1}|one|1|2026-01-04T23:59:59.999Z|2026-01-04T23:59:59.999Z|5|crashed";
  const std::string b = "BB|two|2|2026-01-04|2026-01-05T00:00:00.000Z|5|crashed";
  const std::string c = "AAC|one|2|2026-01-11T10:00:00.000Z|2026-01-11T10:00:00.000Z|2|crashed";
  struct Case {
    const char* figure;
    Filter filter;
    std::vector<std::string> rows;
  };
  for (const auto& [figure, filter, rows] : std::vector<Case>{
           {"events-by-day",
            all,
            {"0001-01-01|é|1", "2026-01-04|Application|1", "2026-01-04|Command|3",
             "2026-01-04|MemoryUsage|1", "2026-01-05|Application|2", "2026-01-05|Command|1",
             "2026-01-05|MemoryUsage|2", "2026-01-11|Application|1", "2026-01-11|Command|1"}},
           {"events-by-day",
            one,
            {"2026-01-04|Application|1", "2026-01-04|Command|3", "2026-01-04|MemoryUsage|1",
             "2026-01-11|Application|1", "2026-01-11|Command|1"}},
           {"installations-by-day", all, {"2026-01-04|1", "2026-01-05|1", "2026-01-11|1"}},
           {"installations-by-day", version, {"2026-01-05|1", "2026-01-11|1"}},
           {"installations-by-week", all, {"2025-12-29|1", "2026-01-05|2"}},
           {"installations-by-week", week, {"2026-01-05|2"}},
           {"versions", all, {"2|2|2", "1|1|1"}},
           {"versions", one, {"1|1|1", "2|1|1"}},
           {"crashes", all, {"2|11|Copy|2|2|AAC", "|||1|0|", "1|11|Draw|1|1|{AA-1}"}},
           {"crashes", week, {"2|11|Copy|2|2|AAC"}},
           {"commands", all, {"Draw|2|1|500", "Copy|2|0|0"}},
           {"commands", version, {"Copy|2|0|0"}},
           {"memory", all, {"2025-12-29|1|2000|2000|2000", "2026-01-05|1|1500|1500|1500"}},
           {"sessions", all, {c, a, b}},
           {"sessions", week, {c, b}},
           {"sessions", crashed, {c}},
           {"sessions", first, {c}},
           {"filters",
            all,
            {"first-day|0001-01-01", "last-day|2026-01-11", "version|1", "version|2"}},
       }) {
    EXPECT_EQ(read(figure, filter), rows) << figure;
  }
  EXPECT_THAT(read("refused"), ElementsAre(EndsWith("Z|ada|row is no JSON object|1|refused")));
  EXPECT_THROW(read("events"), std::invalid_argument);
  const auto table = SqliteReader(file_).read("installations-by-week", all, soon());
  EXPECT_THAT(table.columns, ElementsAre("week", "installations"));
}

TEST_F(SqliteReaderTest, FindsTheLastCommandThatWasStartedBeforeACrash) {
  const std::string open = event({"A", "", ""}, "Command", "Started", "Open");
  const std::string copy = event({"A", "", ""}, "Command", "Started", "Copy");
  const std::string ended = event({"A", "", ""}, "Command", "Cancelled", "Move");
  const std::string crash = event({"A", "", ""}, "Application", "Crashed");
  for (const auto& [packages, command] :
       std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{open + ',' + copy + ',' + ended + ',' + crash}, "Copy|1"},
           {{open, copy, crash}, "Copy|1"},
           {{open, copy, open + ',' + open, crash}, "Copy|1"},
           {{copy + ',' + crash, open, crash + ',' + crash}, "Copy|2"},
           {{crash, copy}, "|1"},
       }) {
    std::filesystem::remove(file_);
    for (const std::string& rows : packages) {
      add(withEvents(rows));
    }
    EXPECT_THAT(read("crashes"), ElementsAre("||" + command + "|0|A"));
  }
}

TEST_F(SqliteReaderTest, FollowsTheRowsThatArrive) {
  addSample();
  Filter filter;
  filter.limit = 2;
  const auto newest = read("live", filter);
  ASSERT_EQ(newest.size(), 2U);
  EXPECT_THAT(newest[1], AllOf(StartsWith("13|20"), HasSubstr("Z|ada|||é||")));
  filter.after = "5";
  EXPECT_THAT(read("live", filter), ElementsAre(StartsWith("6|"), StartsWith("7|")));
  filter.version = "2";
  filter.from = "2026-01-11";
  EXPECT_THAT(read("live", filter), ElementsAre(StartsWith("10|"), StartsWith("11|")));
  filter.after = "x";
  EXPECT_THROW(read("live", filter), std::invalid_argument);

  Filter none;
  none.installation = "three";
  none.after = "5";
  const auto examined = SqliteReader(file_).read("live", none, soon());
  EXPECT_THAT(examined.rows, IsEmpty());
  EXPECT_EQ(examined.cursor, "13");

  execute("DELETE FROM events WHERE id > 10");
  Filter ahead;
  ahead.limit = 2;
  ahead.after = "10";
  EXPECT_THAT(read("live", ahead), IsEmpty());
  ahead.after = "13";
  EXPECT_THAT(read("live", ahead), ElementsAre(StartsWith("9|"), StartsWith("10|")));
}

TEST_F(SqliteReaderTest, ReturnsTheRecordsOfASession) {
  addSample();
  SqliteReader reader(file_);
  const auto records = reader.session("{AA-1}", soon()).records;
  ASSERT_EQ(records.size(), 5U);
  EXPECT_TRUE(records[0].isEnvironment);
  EXPECT_FALSE(records[1].isEnvironment);
  EXPECT_EQ(records[1].count, 2);
  EXPECT_THAT(records[4].text, HasSubstr("boom"));
  EXPECT_THAT(reader.session("AA", soon()).records, IsEmpty());
}

TEST_F(SqliteReaderTest, ReturnsTheNewestRecordsOfALargeSession) {
  const std::string row = R"({"SessionId":"S","n":")";
  std::string rows = row + "first\"}";
  for (std::size_t i = 1; i <= SessionLimits::records; ++i) {
    rows += ',' + row + std::to_string(i) + "\"}";
  }
  add(package(environment({"S", "one", ""}, "1"), rows));
  auto found = SqliteReader(file_).session("S", soon());
  EXPECT_TRUE(found.isShortened);
  ASSERT_EQ(found.records.size(), SessionLimits::records);
  EXPECT_TRUE(found.records[0].isEnvironment);
  EXPECT_THAT(found.records[1].text, HasSubstr(R"("2")"));
  EXPECT_THAT(found.records.back().text, HasSubstr(R"("20000")"));

  const std::string half = row + std::string(SessionLimits::bytes / 2, 'x') + "\"}";
  add(withEvents(half));
  found = SqliteReader(file_).session("S", soon());
  EXPECT_EQ(found.records.size(), SessionLimits::records);
  add(withEvents(row + 'y' + half.substr(row.size()) + R"(,{"SessionId":"S"})"));
  found = SqliteReader(file_).session("S", soon());
  EXPECT_TRUE(found.isShortened);
  EXPECT_EQ(found.records.size(), 3U);
}

TEST_F(SqliteReaderTest, LimitsWhatSendersCanName) {
  std::string rows = event({"S", "one", "2026-01-04"}, "common", "");
  rows += ',' + rows;
  std::string environments = environment({"S", "one", ""}, "1");
  for (int i = 0; i < 600; ++i) {
    const std::string name = std::to_string(1000 + i);
    const Names names{name, "one", "2026-01-04"};
    environments += ',' + environment(names, name);
    rows += ',' + event(names, name, "") + ',' + event(names, "common", "") + ',' +
            event(names, "Application", "Crashed", "", R"("Exception Code":")" + name + '"');
  }
  add(package(environments, rows));
  const auto days = read("events-by-day");
  ASSERT_EQ(days.size(), 51U);
  EXPECT_EQ(days[0], "2026-01-04|(others)|552");
  EXPECT_EQ(days[1], "2026-01-04|1000|1");
  EXPECT_EQ(days.back(), "2026-01-04|common|602");
  EXPECT_EQ(read("crashes").size(), 200U);
  EXPECT_EQ(read("versions").size(), 200U);
  EXPECT_EQ(read("filters").size(), 500U);
}

TEST_F(SqliteReaderTest, ReadsWhileCollectorsWriteAndFailsAfterTheDeadline) {
  EXPECT_THROW(SqliteReader{file_}, StoreError);
  SqliteStore store(file_);
  SqliteReader reader(file_);
  SqliteConnection other(file_, SqliteConnection::Missing::Fail);
  other.execute("BEGIN IMMEDIATE");
  EXPECT_THAT(reader.read("versions", {}, soon()).rows, IsEmpty());
  other.execute("COMMIT");
  std::string rows = "{}";
  for (int row = 0; row < 20'000; ++row) {
    rows += R"(,{"SessionId":")" + std::to_string(row) + R"("})";
  }
  store.add(uploadsOf(withEvents(rows)), soon());
  EXPECT_EQ(reader.read("sessions", {}, soon()).rows.size(), 200U);
  EXPECT_THROW(reader.read("sessions", {}, std::chrono::steady_clock::now()), StoreError);
  EXPECT_EQ(reader.read("versions", {}, soon()).rows.size(), 1U);
  EXPECT_THAT(test::query(file_, "PRAGMA integrity_check"), ElementsAre("ok"));
}

}  // namespace
}  // namespace qel::collector
