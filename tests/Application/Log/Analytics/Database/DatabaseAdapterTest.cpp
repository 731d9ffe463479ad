#include <gmock/gmock.h>
#include <sqlite3.h>

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"
#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using qel::db::sql::Result;
using qel::db::sql::SqlDatabaseAdapter;
using qel::log::analytics::details::DatabaseAdapter;
using qel::log::analytics::details::DatabaseAdapterTimestampDecorator;
using qel::test::AssertionRecorder;
using qel::test::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// Notes the statements, and answers with what the test has prepared.
class RecordingDatabase : public qel::db::sql::SqlDatabaseInterface {
 public:
  Result execute(const std::string& statement) override {
    statements.push_back(statement);
    if (failure) {
      failure();
    }
    return answer;
  }
  Result selectAll(const std::string& table) override { return execute("all of " + table); }
  Result deleteIds(const std::string& table, const std::string& ids) override {
    return execute("delete " + ids + " from " + table);
  }
  qel::ScopeGuard beginTransaction() override {
    statements.emplace_back("begin");
    return qel::ScopeGuard([this] { statements.emplace_back("end"); });
  }

  std::vector<std::string> statements;
  std::function<void()> failure;
  Result answer;
};

class DatabaseAdapterTest : public testing::Test {
 protected:
  template <typename Adapter>
  std::vector<std::string> statementsOf(void (*use)(Adapter&)) {
    Adapter adapter(database_);
    database_->statements.clear();
    use(adapter);
    return database_->statements;
  }
  void answerWith(Result::Rows rows) { database_->answer.resultSet(std::move(rows)); }
  void answerWithFailure(const std::string& message) {
    database_->answer.vSuccessSet(false);
    database_->answer.vErrorMessageSet(message);
  }

  const std::shared_ptr<RecordingDatabase> database_ = std::make_shared<RecordingDatabase>();
};

TEST_F(DatabaseAdapterTest, TurnsOperationsIntoTheseStatements) {
  using Plain = DatabaseAdapter;
  using Stamped = DatabaseAdapterTimestampDecorator;
  DatabaseAdapter constructed(database_);
  EXPECT_THAT(database_->statements, ElementsAre("PRAGMA auto_vacuum = INCREMENTAL;"));
  EXPECT_THAT(statementsOf<Plain>([](Plain& a) { a.addTableIfNotExists("Items"); }),
              ElementsAre("CREATE TABLE IF NOT EXISTS Items (ID INTEGER PRIMARY KEY AUTOINCREMENT, "
                          "json TEXT)"));
  EXPECT_THAT(statementsOf<Stamped>([](Stamped& a) { a.addTableIfNotExists("Items"); }),
              ElementsAre("CREATE TABLE IF NOT EXISTS Items (ID INTEGER PRIMARY KEY AUTOINCREMENT, "
                          "json TEXT, timestamp_utc DATETIME NOT NULL DEFAULT(STRFTIME('%Y-%m-%d "
                          "%H:%M:%S', 'NOW')))"));
  EXPECT_THAT(statementsOf<Plain>([](Plain& a) {
                a.insert(R"({"a": "b"})", "Items");
                a.insert("'it''s'", "Items");
                a.insert("", "Environments");
              }),
              ElementsAre(R"(INSERT into Items(json) VALUES ('{"a": "b"}'))",
                          "INSERT into Items(json) VALUES ('''it''''s''')",
                          "INSERT into Environments(json) VALUES ('')"));
  EXPECT_THAT(statementsOf<Plain>([](Plain& a) { a.getAllFromSession("Items", "abc"); }),
              ElementsAre(R"(SELECT * FROM Items WHERE instr(json, '"SessionId": "abc"') > 0)"));
  EXPECT_THAT(
      statementsOf<Plain>([](Plain& a) {
        a.deleteByIds({3, 7, -12}, "Items");
      }),
      ElementsAre("delete 3,7,-12 from Items", "DELETE FROM sqlite_sequence WHERE name = 'Items'"));
  EXPECT_THAT(
      statementsOf<Plain>([](Plain& a) { a.deleteByIds({}, "Items"); }),
      ElementsAre("delete  from Items", "DELETE FROM sqlite_sequence WHERE name = 'Items'"));
  EXPECT_THAT(statementsOf<Plain>([](Plain& a) { a.vacuum(); }),
              ElementsAre("PRAGMA incremental_vacuum;"));
  EXPECT_THAT(statementsOf<Plain>([](Plain& a) {
                const auto transaction = a.createTransaction();
                a.vacuum();
              }),
              ElementsAre("begin", "PRAGMA incremental_vacuum;", "end"));
}

TEST_F(DatabaseAdapterTest, ReadsRowsByTheirIds) {
  DatabaseAdapter adapter(database_);
  answerWith({{" 7x", "seven", "ignored"}, {"-2", "minus"}, {"7", "later"}});
  EXPECT_THAT(adapter.getAll("Items"), ElementsAre(Pair(-2, "minus"), Pair(7, "seven")));
  answerWith({{"x", "no number"}});
  EXPECT_THROW(adapter.getAll("Items"), std::invalid_argument);
  answerWith({{"2147483648", "too large"}});
  EXPECT_THROW(adapter.getAllFromSession("Items", "abc"), std::out_of_range);
  answerWithFailure("no");
  EXPECT_THAT(adapter.getAll("Items"), IsEmpty());
}

TEST_F(DatabaseAdapterTest, ReportsAnExceptionOfInsertAsAnAssertion) {
  AssertionRecorder assertions;
  DatabaseAdapter plain(database_);
  DatabaseAdapterTimestampDecorator stamped(database_);
  database_->failure = [] { throw std::runtime_error("out of luck"); };
  plain.insert("{}", "Items");
  stamped.insert("{}", "Items");
  database_->failure = [] { throw 1; };
  plain.insert("{}", "Items");
  std::vector<std::string> messages;
  for (const auto& info : assertions.records()) {
    messages.push_back(info.message);
    EXPECT_EQ(info.function, "qel::log::analytics::details::DatabaseAdapter::insert");
    EXPECT_EQ(info.file, "Application/Log/Analytics/Database/DatabaseAdapter");
  }
  const std::string start =
      "An error happened in insert database. Please tell Tools Team:\n"
      "Exception in thread(qel::log::analytics::details::DatabaseAdapter";
  EXPECT_THAT(messages, ElementsAre(start + "): out of luck",
                                    start + "TimestampDecorator): out of luck", start + ")"));
}

TEST_F(DatabaseAdapterTest, LogsAFailedDeletionAndKeepsCounting) {
  DatabaseAdapter adapter(database_);
  database_->statements.clear();
  answerWithFailure("disk I/O error");
  testing::internal::CaptureStderr();
  adapter.deleteByIds({1}, "Items");
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("error qel.log.analytics.details.DatabaseAdapter: Could not "
                                 "delete all entries by id from Items database. Error: disk I/O "
                                 "error\n"));
  EXPECT_THAT(database_->statements, ElementsAre("delete 1 from Items"));
}

TEST(DatabaseAdapterWithoutDatabaseTest, FailsSilently) {
  DatabaseAdapter adapter(nullptr);
  adapter.addTableIfNotExists("Items");
  adapter.insert("{}", "Items");
  adapter.vacuum();
  EXPECT_THAT(adapter.getAllFromSession("Items", "abc"), IsEmpty());
}

/// A text per row of the table, straight from the file.
std::vector<std::string> columnOf(const std::filesystem::path& file, const std::string& query) {
  sqlite3* db = nullptr;
  std::vector<std::string> values;
  EXPECT_EQ(sqlite3_open(file.c_str(), &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(
                db, query.c_str(),
                [](void* target, int, char** columns, char**) {
                  static_cast<std::vector<std::string>*>(target)->emplace_back(columns[0]);
                  return 0;
                },
                &values, nullptr),
            SQLITE_OK)
      << sqlite3_errmsg(db);
  sqlite3_close(db);
  return values;
}

class TimestampDecoratorTest : public testing::Test {
 protected:
  TimestampDecoratorTest() { adapter_.addTableIfNotExists("Items"); }
  void insertAged(const std::string& json, const std::string& age) {
    adapter_.insert(json, "Items");
    columnOf(file_, "UPDATE Items SET timestamp_utc = STRFTIME('%Y-%m-%d %H:%M:%S', 'NOW', '" +
                        age + "') WHERE ID = (SELECT MAX(ID) FROM Items)");
  }

  TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "Support.db";
  DatabaseAdapterTimestampDecorator adapter_{std::make_shared<SqlDatabaseAdapter>(file_)};
};

TEST_F(TimestampDecoratorTest, StampsRowsInUtcAndDeletesTheOldOnes) {
  insertAged("two minutes", "-120 seconds");
  insertAged("one minute", "-61 seconds");
  insertAged("half a minute", "-30 seconds");
  adapter_.insert("now", "Items");
  EXPECT_THAT(columnOf(file_,
                       "SELECT ABS(STRFTIME('%s', 'NOW') - STRFTIME('%s', timestamp_utc)) "
                       "< 10 FROM Items WHERE json = 'now'"),
              ElementsAre("1"));
  adapter_.deleteEntriesOlderThan("Items", 60s);
  EXPECT_THAT(adapter_.getAll("Items"), ElementsAre(Pair(3, "half a minute"), Pair(4, "now")));
}

TEST_F(TimestampDecoratorTest, CountsFromOneAgainWhenEverythingIsGone) {
  insertAged("old", "-5 seconds");
  insertAged("old", "-2 seconds");
  adapter_.deleteEntriesOlderThan("Items", 0s);
  adapter_.insert("new", "Items");
  EXPECT_THAT(adapter_.getAll("Items"), ElementsAre(Pair(1, "new")));
}

TEST_F(TimestampDecoratorTest, FindsTheRowsOfASessionByTheExactText) {
  const std::string match = R"({"SessionId": "abc", "it's": "here"})";
  adapter_.insert(match, "Items");
  adapter_.insert(R"({"SessionId":"abc"})", "Items");
  adapter_.insert(R"({"SessionId": "abcd"})", "Items");
  EXPECT_THAT(adapter_.getAllFromSession("Items", "abc"), ElementsAre(Pair(1, match)));
}

}  // namespace
