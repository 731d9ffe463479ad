#include <algorithm>
#include <chrono>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/host/QelSql/DatabaseFixture.h"

namespace qel::db::sql {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using Rows = Result::Rows;

class StatementsTest : public DatabaseTest {
 protected:
  StatementsTest() { createTable(database_); }

  bool insert(const std::string& json) {
    return database_.execute("INSERT into T(json) VALUES ('" + json + "')").boSuccess();
  }

  Rows rows() { return database_.selectAll("T").result(); }

  std::string count() { return database_.execute("SELECT count(*) FROM T").result().at(0).at(0); }

  SqlDatabaseAdapter database_{file_};
};

TEST_F(StatementsTest, YieldsRowsAsTexts) {
  EXPECT_EQ((Rows{{std::string("a\0b", 3), "", "", "1.5", "-7"}, {"2", "c", "d", "e", "f"}}),
            database_
                .execute("VALUES ('a' || char(0) || 'b', NULL, '', 1.5, -7),"
                         "('2', 'c', 'd', 'e', 'f') ; \r\n\t")
                .result());
  for (const char* json : {"one", "two", "three", "four"}) {
    insert(json);
  }
  EXPECT_TRUE(database_.deleteIds("T", "1,3,77").boSuccess());
  EXPECT_TRUE(database_.deleteIds("T", "").boSuccess());
  EXPECT_EQ((Rows{{"2", "two"}, {"4", "four"}}), rows());
}

TEST_F(StatementsTest, RefusesWhatIsNotOneStatement) {
  const std::vector<std::pair<std::string, std::string>> refused = {
      {"INSERT into T(json) VALUES ('a'); DROP TABLE T", "text follows the statement"},
      {"INSERT into T(json) VALUES ('a') -- b\n; c", "text follows the statement"},
      {std::string("INSERT into T(json) VALUES ('a\0b')", 34),
       "the statement holds a NUL character"},
      {std::string("INSERT into T(json) VALUES ('a')\0", 33),
       "the statement holds a NUL character"},
      {"", "the statement is empty"},
      {" ; \n", "the statement is empty"},
      {"INSERT into U(json) VALUES ('a')", "no such table: U"},
  };
  for (const auto& [statement, error] : refused) {
    const Result result = database_.execute(statement);
    EXPECT_FALSE(result.boSuccess()) << statement;
    EXPECT_EQ(error, result.sErrorMessageGet());
  }
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty()) << "outside a transaction the result alone tells";
}

TEST_F(StatementsTest, StoresATransactionWholeOrNotAtAll) {
  {
    const auto guard = database_.beginTransaction();
    EXPECT_TRUE(insert("first"));
    {
      const auto inner = database_.beginTransaction();
      EXPECT_FALSE(insert("secret'"));
    }
    EXPECT_EQ("not run, since the transaction has failed: unrecognized token: \"'secret'')\"",
              database_.selectAll("T").sErrorMessageGet());
    EXPECT_FALSE(insert("third"));
    EXPECT_FALSE(database_.execute("CREATE TABLE U (ID)").boSuccess());
  }
  EXPECT_THAT(rows(), IsEmpty());
  {
    const auto guard = database_.beginTransaction();
    const auto inner = database_.beginTransaction();
    EXPECT_TRUE(insert("fourth"));
    EXPECT_TRUE(insert("fifth"));
  }
  EXPECT_EQ((Rows{{"1", "fourth"}, {"2", "fifth"}}), rows());
  const std::string log = logged();
  EXPECT_THAT(log, HasSubstr("error qel.db.sql.SqlDatabaseAdapter: database \"" + file_.string() +
                             "\": a statement failed, so nothing of its transaction is stored: "
                             "error at byte 28 of the statement\n"));
  EXPECT_EQ(1, std::count(log.begin(), log.end(), '\n')) << log;
  EXPECT_THAT(log, Not(HasSubstr("secret")));
}

TEST_F(StatementsTest, RollsBackATransactionThatSqliteHasEndedByItself) {
  database_.execute("PRAGMA max_page_count = 20");
  {
    const auto guard = database_.beginTransaction();
    EXPECT_TRUE(insert("small"));
    EXPECT_EQ("database or disk is full",
              database_.execute("INSERT into T(json) VALUES (hex(zeroblob(1000000)))")
                  .sErrorMessageGet());
    EXPECT_FALSE(insert("late"));
  }
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_TRUE(insert("next"));
}

TEST_F(StatementsTest, KeepsOtherThreadsOutOfATransaction) {
  auto others = std::async(std::launch::async, [this] {
    for (int i = 0; i < 40; ++i) {
      EXPECT_TRUE(insert("single"));
    }
  });
  auto batches = std::async(std::launch::async, [this] {
    for (int i = 0; i < 20; ++i) {
      const auto guard = database_.beginTransaction();
      EXPECT_EQ("UNIQUE constraint failed: T.ID",
                database_.execute("INSERT into T(ID) VALUES (2000), (2000)").sErrorMessageGet());
    }
    for (int i = 0; i < 20; ++i) {
      const auto guard = database_.beginTransaction();
      EXPECT_TRUE(insert("paired"));
      EXPECT_TRUE(insert("paired"));
    }
  });
  while (others.wait_for(0s) != std::future_status::ready ||
         batches.wait_for(0s) != std::future_status::ready) {
    const auto pairs = database_.execute("SELECT count(*) % 2 FROM T WHERE json = 'paired'");
    EXPECT_EQ((Rows{{"0"}}), pairs.result());
  }
  EXPECT_EQ("80", count());
}

TEST_F(StatementsTest, WaitsOneSecondInAllOnTheOpeningThread) {
  const auto other = openInOtherProgram(file_);
  execute(other, "BEGIN EXCLUSIVE");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ("database is locked", database_.selectAll("T").sErrorMessageGet());
  EXPECT_GE(std::chrono::steady_clock::now() - start, 1s);
  const auto middle = std::chrono::steady_clock::now();
  {
    const auto guard = database_.beginTransaction();
    execute(other, "COMMIT");
    EXPECT_EQ("not run, since the transaction has failed: database is locked",
              database_.execute("INSERT into T(json) VALUES ('a')").sErrorMessageGet());
  }
  EXPECT_LT(std::chrono::steady_clock::now() - middle, 500ms);
  EXPECT_THAT(logged(), HasSubstr("\": BEGIN failed, so nothing of its transaction is stored: "
                                  "database is locked\n"));
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_TRUE(insert("b"));
}

TEST_F(StatementsTest, WaitsUntilTheFileIsFreeOnOtherThreads) {
  const std::vector<std::pair<const char*, std::chrono::milliseconds>> locks = {
      {"BEGIN EXCLUSIVE", 200ms},
      {"BEGIN; SELECT * FROM T", 5500ms},  // It is COMMIT that meets this one.
  };
  for (const auto& [lock, held] : locks) {
    EXPECT_THAT(logged(), IsEmpty());
    const auto other = openInOtherProgram(file_);
    execute(other, lock);
    auto batch = std::async(std::launch::async, [this] {
      const auto guard = database_.beginTransaction();
      EXPECT_TRUE(insert("a"));
      EXPECT_TRUE(insert("b"));
    });
    EXPECT_EQ(std::future_status::timeout, batch.wait_for(held)) << lock;
    execute(other, "COMMIT");
  }
  EXPECT_EQ("4", count());
  EXPECT_THAT(logged(), MatchesRegex(".*\" is held by another process; waiting until it is free\n"
                                     ".*\" is free again\n"));
}

}  // namespace
}  // namespace qel::db::sql
