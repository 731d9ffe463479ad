#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"
#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Logged.h"
#include "tests/support/Query.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::log::analytics::details {
namespace {

using namespace std::chrono_literals;
using db::sql::SqlDatabaseAdapter;
using namespace testing;

/// A database file whose statements can be made to throw.
class Database : public SqlDatabaseAdapter {
 public:
  using SqlDatabaseAdapter::SqlDatabaseAdapter;
  db::sql::Result execute(const std::string& statement) override {
    return isOutOfLuck ? throw std::runtime_error("out of luck")
                       : SqlDatabaseAdapter::execute(statement);
  }

  bool isOutOfLuck = false;
};

class DatabaseAdapterTest : public testing::Test {
 protected:
  std::vector<std::string> query(const std::string& statement) const {
    return test::query(directory_.path() / "T", statement);
  }

  test::TemporaryDirectory directory_;
  const std::shared_ptr<Database> database_ = std::make_shared<Database>(directory_.path() / "T");
  DatabaseAdapter plain_{database_};
  DatabaseAdapterTimestampDecorator stamped_{database_};
};

TEST_F(DatabaseAdapterTest, MakesTheseTables) {
  plain_.addTableIfNotExists("Items");
  plain_.addTableIfNotExists("Items");
  stamped_.addTableIfNotExists("Stamped");
  EXPECT_THAT(query("SELECT sql FROM sqlite_schema WHERE name <> 'sqlite_sequence'"),
              ElementsAre("CREATE TABLE Items (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT)",
                          "CREATE TABLE Stamped (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT, "
                          "timestamp_utc DATETIME NOT NULL DEFAULT(STRFTIME('%Y-%m-%d %H:%M:%S', "
                          "'NOW')))"));
}

TEST_F(DatabaseAdapterTest, StoresTextsAsTheyAreAndCountsOnFromTheLastOneThatIsLeft) {
  stamped_.addTableIfNotExists("Items");
  for (const auto* text : {"'it''s'", "", "'); DROP TABLE Items; --", "last"}) {
    stamped_.insert(text, "Items");
  }
  EXPECT_THAT(stamped_.getAll("Items"),
              ElementsAre(Pair(1, "'it''s'"), Pair(2, ""), Pair(3, "'); DROP TABLE Items; --"),
                          Pair(4, "last")));
  stamped_.deleteByIds({1, 3, 4, -12}, "Items");
  stamped_.deleteByIds({}, "Items");
  stamped_.insert("next", "Items");
  stamped_.deleteEntriesOlderThan("Items", std::chrono::seconds::max());
  EXPECT_THAT(stamped_.getAll("Items"), ElementsAre(Pair(2, ""), Pair(3, "next")));
  stamped_.deleteEntriesOlderThan("Items", -60s);
  stamped_.insert("first", "Items");
  EXPECT_THAT(stamped_.getAll("Items"), ElementsAre(Pair(1, "first")));
}

TEST_F(DatabaseAdapterTest, ReadsNoRowsWhoseIdsAreNoNumbersOfItsRange) {
  EXPECT_THAT(plain_.getAll("Missing"), IsEmpty());
  database_->execute("CREATE TABLE Items (ID TEXT, json TEXT)");
  database_->execute("INSERT INTO Items VALUES ('x', '')");
  EXPECT_THROW(plain_.getAll("Items"), std::invalid_argument);
  database_->execute("UPDATE Items SET ID = '2147483648', json = '\"SessionId\": \"abc\"'");
  EXPECT_THROW(plain_.getAllFromSession("Items", "abc"), std::out_of_range);
}

TEST_F(DatabaseAdapterTest, ReportsAnExceptionOfInsertAsAnAssertion) {
  const test::AssertionRecorder assertions;
  database_->isOutOfLuck = true;
  stamped_.insert("{}", "Items");
  EXPECT_THAT(
      assertions.lines(),
      ElementsAre(MatchesRegex("qel::log::analytics::details::DatabaseAdapter::insert "
                               "\\(Application/Log/Analytics/Database/DatabaseAdapter:[0-9]+\\): "
                               "An error happened in insert database. Please tell Tools Team:\n"
                               "Exception in thread\\(qel::log::analytics::details::"
                               "DatabaseAdapterTimestampDecorator\\): out of luck")));
}

TEST_F(DatabaseAdapterTest, LogsAFailedDeletionAndKeepsCounting) {
  plain_.addTableIfNotExists("Items");
  plain_.insert("one", "Items");
  database_->execute(
      "CREATE TRIGGER keep BEFORE DELETE ON Items BEGIN SELECT RAISE(ABORT, 'kept'); END");
  testing::internal::CaptureStderr();
  plain_.deleteByIds({1}, "Items");
  EXPECT_THAT(test::endCaptureOfErrors(),
              HasSubstr("error qel.log.analytics.details.DatabaseAdapter: Could not "
                        "delete all entries by id from Items database. Error: kept\n"));
  EXPECT_THAT(query("SELECT seq FROM sqlite_sequence"), ElementsAre("1"));
}

}  // namespace
}  // namespace qel::log::analytics::details
