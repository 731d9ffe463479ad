#include <map>
#include <random>
#include <sstream>

#include "tests/support/Query.h"
#include "tests/tools/collector/SqliteReaderTest.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using namespace testing;

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
