#include <cmath>
#include <random>

#include <gmock/gmock.h>

#include "tests/support/Query.h"
#include "tests/tools/CommandTest.h"
#include "tests/tools/collector/Uploads.h"
#include "tools/collector/EraseCommand.h"
#include "tools/collector/SqliteExecution.h"
#include "tools/collector/SqliteReader.h"
#include "tools/collector/SqliteStore.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using namespace testing;

/// Members of a row; NULL if the text is empty.
struct Names {
  std::string session;
  std::string installation;
  std::string time;
};

std::string member(const std::string& name, const std::string& value) {
  return value.empty() ? "" : R"(,")" + name + R"(":")" + value + '"';
}

std::string textOf(const Names& names, const std::string& more) {
  return R"({"x":0)" + member("SessionId", names.session) +
         member("InstallationId", names.installation) + member("Timestamp", names.time) + more +
         '}';
}

std::string event(const Names& names, const std::string& category, const std::string& subcategory,
                  const std::string& name = "", const std::string& details = "") {
  return textOf(names, member("Category", category) + member("Subcategory", subcategory) +
                           member("Event", name) +
                           (details.empty() ? "" : R"(,"Details":{)" + details + '}'));
}

std::string environment(const Names& names, const std::string& version) {
  return textOf(names, R"(,"CurrentActiveApplication":{"x":1)" + member("Version", version) + '}');
}

/// Real numbers in thousandths.
std::string shown(const Cell& cell) {
  if (const auto* const number = std::get_if<std::int64_t>(&cell)) {
    return std::to_string(*number);
  }
  if (const auto* const real = std::get_if<double>(&cell)) {
    return std::to_string(std::llround(*real * 1000));
  }
  const auto* const text = std::get_if<std::string>(&cell);
  return text == nullptr ? "" : *text;
}

class SqliteReaderTest : public test::CommandTest {
 protected:
  void add(const std::string& body) const { SqliteStore(file_).add(uploadsOf(body), soon()); }

  /// The rows of an answer, the columns of each joined by "|".
  std::vector<std::string> read(std::string_view figure, const Filter& filter = {}) const {
    std::vector<std::string> rows;
    for (const auto& cells : SqliteReader(file_).read(figure, filter, soon()).rows) {
      std::string& row = rows.emplace_back(shown(cells.front()));
      for (std::size_t column = 1; column < cells.size(); ++column) {
        row += '|' + shown(cells[column]);
      }
    }
    return rows;
  }

  void execute(const std::string& sql) const {
    SqliteConnection(file_, SqliteConnection::Missing::Fail).execute(sql);
  }

  static void eraseQuietly(const EraseOptions& options) {
    internal::CaptureStdout();
    erase(options);
    internal::GetCapturedStdout();
  }

  /// Two crashes of version 2 in the same command, one of version 1, and rows of hostile clients.
  void addSample() const {
    const Names a{"{AA-1}", "one", "2026-01-04T23:59:59.999Z"};
    const Names b{"BB", "two", "2026-01-05T00:00:00.000Z"};
    const Names c{"AAC", "one", "2026-01-11T10:00:00.000Z"};
    const Names foreign{"", "", "2026-02-30T00:00:00.000Z"};
    const std::string code = R"("Exception Code":"11")";
    const std::string draw = event(a, "Command", "Started", "Draw");
    add(package(environment(a, "1"),
                draw + ',' + draw + ',' + event(a, "Command", "Cancelled", "Draw") + ',' +
                    event(a, "MemoryUsage", "Application", "Runtime", R"("Max":"2048")")));
    add(withEvents(event(a, "Application", "Crashed", "boom", code) + ',' +
                   event(b, "Command", "Started", "Copy") + ',' +
                   event(b, "Application", "Crashed", "bang", code) + ',' +
                   event(b, "Application", "Stopped") + ',' +
                   event(b, "MemoryUsage", "Application", "Runtime", R"("Max":1536)") + ',' +
                   event(b, "MemoryUsage", "Total", "Runtime", R"("Max":"9999999")")));
    add(withEvents(event(c, "Command", "Started", "Copy") + ',' +
                   event(c, "Application", "Crashed", "boom", code) + ',' +
                   event(foreign, "Application", "Crashed") + ',' +
                   event({"", "", "0001-01-01"}, "é", "") + ",refused"));
    add(package(environment(b, "2") + ',' + environment(c, "2") + ',' +
                    environment({"BB", "two", "2026-01-04"}, "3") + ',' + environment(b, ""),
                ""));
  }

  const std::filesystem::path file_ = file("störe.db");
};

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

/// Compares the answers with those that are computed from the rows alone. For the values that stay
/// when a row is removed, triggers of the store keep the removed rows.
class SummariesTest : public SqliteReaderTest {
 protected:
  SummariesTest() {
    std::istringstream lines(test::contentOf(QEL_TOOLS_TESTS "/collector/figures.sql"));
    std::string figure;
    for (std::string line; std::getline(lines, line);) {
      line.starts_with("-- ") ? figure = line.substr(3) : sql_[figure] += line + '\n';
    }
  }

  /// Begins anew with the rows that the store has.
  void keepPast() const {
    for (const std::string table : {"events", "environments"}) {
      execute("DROP TABLE IF EXISTS past_" + table + "; CREATE TABLE past_" + table +
              " AS SELECT * FROM " + table + "; CREATE TRIGGER IF NOT EXISTS keep_" + table +
              " AFTER INSERT ON " + table + " BEGIN INSERT INTO past_" + table + " SELECT * FROM " +
              table + " WHERE id = NEW.id; END");
    }
  }

  /// The sessions and days of memory that have no row left must not have any trace.
  void forgetPast() const {
    const std::string names = "ifnull(session, ''), ifnull(installation, '')";
    const std::string isGone = " WHERE (" + names + ") NOT IN (SELECT " + names +
                               " FROM events UNION SELECT " + names + " FROM environments); ";
    const std::string day = names + ", substr(time, 1, 10)";
    execute("DELETE FROM past_events" + isGone + "DELETE FROM past_environments" + isGone +
            "UPDATE past_events SET subcategory = 'gone' WHERE category = 'MemoryUsage' AND (" +
            day + ") NOT IN (SELECT " + day + " FROM events WHERE category = 'MemoryUsage')");
  }

  void expectSameAsRows(const Filter& filter) const {
    for (const auto& [figure, sql] : sql_) {
      if (figure != "common" && sql.find("SELECT") != std::string::npos) {
        EXPECT_EQ(read(figure, filter),
                  test::query(file_, withValues(sql_.at("common") + sql, filter)))
            << figure << ' ' << filter.from << ' ' << filter.until << ' ' << filter.version << ' '
            << filter.installation;
      }
    }
  }

 private:
  static std::string withValues(std::string sql, const Filter& filter) {
    for (const auto& [name, value] : {std::pair(":from", filter.from),
                                      {":until", filter.until},
                                      {":version", filter.version},
                                      {":installation", filter.installation}}) {
      for (auto at = sql.find(name); at != std::string::npos; at = sql.find(name)) {
        sql.replace(at, std::string_view(name).size(), '\'' + value + '\'');
      }
    }
    return sql;
  }

  std::map<std::string, std::string> sql_;
};

/// Makes random packages and changes of a store.
class RandomClients {
 public:
  explicit RandomClients(std::uint32_t seed) : random_(seed) {}

  template <typename Value>
  Value any(const std::vector<Value>& values) {
    return values[random_() % values.size()];
  }
  std::string anyOf(const std::vector<std::string>& values) { return any(values); }
  bool isOneIn(unsigned number) { return random_() % number == 0; }

  std::string time() {
    return anyOf({"2026-01-04T23:59:59.999Z", "2026-01-05T00:00:00.000Z",
                  "2026-01-05T00:00:00.001Z", "2026-01-06T12:00:00.000Z", "2026-01-11",
                  "0001-01-01T00:00:00.000Z", "9999-12-31T23:59:59.999Z",
                  "2026-02-30T00:00:00.000Z", "yesterday", ""});
  }

  Names names() {
    return {anyOf({"A", "B", "{C-1}", "d'", ""}), anyOf({"one", "two", "dr\\u00f6i", ""}), time()};
  }

  std::string anyEvent() {
    switch (random_() % 5) {
      case 0:
        return event(names(), "Command", anyOf({"Started", "Accepted", "Cancelled"}),
                     anyOf({"Copy", "Move", ""}));
      case 1:
        return event(names(), "Application", anyOf({"Crashed", "Stopped", "Started"}), "",
                     anyOf({R"("Exception Code":"5")", R"("Exception Code":5)", "", R"("a":{})"}));
      case 2:
        return event(
            names(), "MemoryUsage", anyOf({"Application", "Application", "Total"}), "",
            R"("Max":)" + anyOf({R"("1024")", "2048", "3000", R"("4000")", R"("much")", "null"}));
      case 3:
        return event(names(), anyOf({"", "Help", "d'\\u0007\\\""}), "");
      default:
        return event(names(), "Graphic", "Action", std::to_string(random_() % 3));
    }
  }

  std::string anyPackage() {
    if (!sent_.empty() && isOneIn(4)) {
      return any(sent_);
    }
    std::string environments;
    for (auto left = random_() % 3; left > 0; --left) {
      environments +=
          (environments.empty() ? "" : ",") + environment(names(), anyOf({"1", "2", ""}));
    }
    std::string events = anyEvent();
    std::string last = events;
    for (auto left = random_() % 12; left > 0; --left) {
      last = isOneIn(5) ? last : anyEvent();
      events += ',' + last;
    }
    return sent_.emplace_back(package(environments, events));
  }

 private:
  std::mt19937 random_;
  std::vector<std::string> sent_;
};

TEST_F(SummariesTest, AgreeWithTheRowsAfterAnyChanges) {
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE(seed);
    for (const char* const end : {"", "-wal", "-shm"}) {
      std::filesystem::remove(file_.string() + end);
    }
    RandomClients clients(seed);
    SqliteStore one(file_);
    SqliteStore other(file_);
    keepPast();
    const auto oldTime = std::chrono::system_clock::time_point(1609459200s);  // 2021
    for (int step = 0; step < 40; ++step) {
      switch (clients.any<int>({0, 0, 0, 0, 1, 2, 3, 4, 5})) {
        case 0: {
          Uploads uploads = uploadsOf(clients.anyPackage());
          uploads.push_back(uploadsOf(clients.anyPackage(), "bob").front());
          (clients.isOneIn(2) ? one : other).add(uploads, soon());
          break;
        }
        case 1:
          execute("UPDATE " + clients.anyOf({"events", "environments"}) +
                  " SET received = '2020' WHERE id % 7 = " + clients.anyOf({"1", "2", "5"}));
          while (one.removeSome(oldTime)) {
          }
          break;
        case 2:
          eraseQuietly({{file_, "", false}, clients.anyOf({"one", "two", "dröi"}), "", true});
          break;
        case 3: {  // rows of another store, and then the newest rows go
          const auto second = file("second.db");
          std::filesystem::remove(second);
          SqliteStore(second).add(uploadsOf(clients.anyPackage()), soon());
          execute("ATTACH '" + second.string() +
                  "' AS old; INSERT OR IGNORE INTO events SELECT NULL, received, count, user,"
                  " session, installation, time, category, subcategory, event, text, key"
                  " FROM old.events");
          other.add(uploadsOf(clients.anyPackage()), soon());
          break;
        }
        case 4:
          execute("UPDATE events SET user = 'newest' WHERE id > (SELECT max(id) - 4 FROM events)");
          eraseQuietly({{file_, "", false}, "", "newest", true});
          break;
        default:  // the summaries are made again
          execute("PRAGMA user_version = 1");
          { const SqliteStore upgraded(file_); }
          keepPast();
      }
      forgetPast();
      Filter filter;
      filter.from = clients.anyOf({"", "", "2026-01-05"});
      filter.until = clients.anyOf({"", "", "2026-01-10"});
      filter.version = clients.anyOf({"", "", "1"});
      filter.installation = clients.anyOf({"", "", "one"});
      expectSameAsRows({});
      expectSameAsRows(filter);
      ASSERT_FALSE(HasFailure()) << "step " << step;
    }
  }
  EXPECT_THAT(test::query(file_, "PRAGMA integrity_check"), ElementsAre("ok"));
}

TEST_F(SummariesTest, AreMadeWhenAStoreOfVersion1IsOpened) {
  addSample();
  execute(
      "DROP TABLE summary_sessions; DROP TABLE summary_daily; DROP TABLE summary_crashes;"
      " DROP TABLE summary_state; PRAGMA user_version = 1");
  EXPECT_THROW(SqliteReader{file_}, StoreError);
  { const SqliteStore upgraded(file_); }
  EXPECT_EQ(read("sessions").size(), 3U);
  keepPast();
  expectSameAsRows({});
}

TEST_F(SummariesTest, ChangeInProportionToTheRemovedRows) {
  SqliteStore store(file_);
  std::string rows;
  for (int row = 0; row < 4000; ++row) {  // 20 sessions, in packages of 5 rows
    const Names names{"S" + std::to_string(row / 5 % 20), "one", "2026-01-05"};
    rows += (row == 0 ? "" : ",") + event(names, "Help", "", std::to_string(row)) + ',' +
            event(names, "Command", "Started", std::to_string(row));
  }
  store.add(uploadsOf(package(environment({"S1", "one", ""}, "1"), rows)), soon());
  keepPast();
  execute("CREATE TABLE changes (id INTEGER PRIMARY KEY)");
  for (const std::string table : {"sessions", "daily"}) {
    for (const std::string change : {"INSERT", "UPDATE", "DELETE"}) {
      execute("CREATE TRIGGER " + table + change + " AFTER " + change + " ON summary_" + table +
              " BEGIN INSERT INTO changes VALUES (NULL); END");
    }
  }
  execute("UPDATE events SET received = '2020' WHERE id <= 7000; DELETE FROM changes");
  const auto oldTime = std::chrono::system_clock::time_point(1609459200s);  // 2021
  for (int left = 7000; left >= 1000; left -= 1000) {
    EXPECT_TRUE(store.removeSome(oldTime));
    EXPECT_THAT(test::query(file_, "SELECT count(*) FROM events"),
                ElementsAre(std::to_string(left)));
    expectSameAsRows({});
  }
  EXPECT_FALSE(store.removeSome(oldTime));
  EXPECT_LT(std::stoi(test::query(file_, "SELECT max(id) FROM changes").front()), 8000);
}

TEST_F(SummariesTest, ContinueWithTheOtherTablesIfOneFails) {
  SqliteStore store(file_);
  const Names names{"A", "one", "2026-01-05"};
  store.add(uploadsOf(package(environment(names, "1"),
                              event(names, "Application", "Crashed") + ',' + event(names, "", ""))),
            soon());
  keepPast();
  execute(
      "UPDATE events SET received = '2020'; UPDATE environments SET received = '2020';"
      " CREATE TRIGGER failing BEFORE DELETE ON events WHEN OLD.id = 2"
      " BEGIN SELECT abs(-9223372036854775808); END");
  const auto oldTime = std::chrono::system_clock::time_point(1609459200s);  // 2021
  const auto removeAll = [&] {
    while (store.removeSome(oldTime)) {
    }
  };
  EXPECT_THROW(removeAll(), StoreError);
  EXPECT_THAT(read("sessions"), ElementsAre("A|one|1|2026-01-05|2026-01-05|1|unknown"));
  expectSameAsRows({});
  execute("DROP TRIGGER failing");
  removeAll();
  EXPECT_THAT(read("sessions"), IsEmpty());
}

TEST_F(SummariesTest, CountARemovedRowAgainWhenItIsSentAgain) {
  SqliteStore store(file_);
  const Names names{"A", "one", "2026-01-05"};
  const std::string crash = event(names, "Application", "Crashed");
  const std::string body = withEvents(event(names, "Help", "") + ',' + crash + ',' + crash);
  store.add(uploadsOf(body), soon());
  execute("UPDATE events SET user = 'bob' WHERE category = 'Application'");
  EXPECT_THAT(read("crashes"), ElementsAre("|||2|1|A"));
  eraseQuietly({{file_, "", false}, "", "bob", true});
  EXPECT_THAT(read("crashes"), IsEmpty());
  EXPECT_THAT(read("sessions"), ElementsAre("A|one||2026-01-05|2026-01-05|1|unknown"));
  store.add(uploadsOf(body), soon());
  EXPECT_THAT(read("crashes"), ElementsAre("|||2|1|A"));
}

TEST_F(SummariesTest, HaveNothingLeftOfAnErasedStore) {
  addSample();
  eraseQuietly({{file_, "", false}, "", "ada", true});
  EXPECT_THAT(test::query(file_,
                          "SELECT 1 FROM summary_sessions UNION ALL SELECT 2 FROM summary_daily"
                          " UNION ALL SELECT 3 FROM summary_crashes"),
              IsEmpty());
}

}  // namespace
}  // namespace qel::collector
