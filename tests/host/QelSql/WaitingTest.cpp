#include "tests/host/QelSql/SqlDatabaseAdapterTest.h"
#include "tests/support/Tally.h"

namespace qel::db::sql {

TEST_F(SqlDatabaseAdapterTest, WaitsInOneCallAsLongAsThePatienceOfTheThreadLasts) {
  TestDatabase database(file_);
  SqlDatabaseAdapter other(file_);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE").boSuccess());
  const auto expectGivenUp = [&](const std::function<void()>& call) {
    EXPECT_THAT(timeOf(call), AllOf(Ge(250ms), Lt(onWindows ? 1000ms : 450ms)));
  };
  const auto read = [&] { return database.errorOf("SELECT * FROM T"); };
  const std::string locked = "database is locked by another connection, and this thread";
  expectGivenUp([&] { EXPECT_THAT(read(), StartsWith(locked)); });  // without a patience set
  expectGivenUp([&] {  // The shortest patience counts, once for all statements.
    const Patience worker(Patience::unlimited);
    const Patience patience(Patience::ofHost);
    const Patience inner(Patience::unlimited);
    EXPECT_THAT(read(), StartsWith(locked));
    EXPECT_THAT(read(), StartsWith(locked));
  });

  SqlDatabaseAdapter(file_).execute(creation);  // opens the file although it is held
  auto worker = std::async(std::launch::async, [&] {
    const Patience patience(Patience::unlimited);
    EXPECT_TRUE(database.insert("a"));
  });
  EXPECT_EQ(std::future_status::timeout, worker.wait_for(5500ms));
  {
    const Patience patience(Patience::ofHost);
    ScopeGuard guard;
    ScopeGuard inner;
    expectGivenUp([&] {
      EXPECT_THAT(read(), StartsWith("another thread uses the database"));
      guard = database.beginTransaction();
      inner = database.beginTransaction();
    });
    EXPECT_TRUE(other.execute("COMMIT").boSuccess());
    worker.get();
    EXPECT_THAT(read(), StartsWith("not run, since the transaction has failed: another thread"));
  }
  EXPECT_TRUE(database.insert("c"));
  EXPECT_EQ((Rows{{"1", "a"}, {"2", "c"}}), database.rows());
  EXPECT_THAT(logged(), AllOf(HasSubstr("a statement was given up: database is locked"),
                              HasSubstr("by another connection; it is checked when it is free"),
                              HasSubstr(" is held by another connection; waiting until it is free"),
                              HasSubstr("\" is free again"),
                              HasSubstr("BEGIN failed, so nothing of its transaction is stored")));
}

TEST_F(SqlDatabaseAdapterTest, EndsWhatAThreadDoesAtItsStopTime) {
  TestDatabase database(file_);
  const auto expectToEnd = [&](const std::string& statement, const std::string& error) {
    Patience::StopTime stopTime{Patience::neverStop};
    auto worker = std::async(std::launch::async, [&] {
      const Patience patience(Patience::unlimited, stopTime);
      return database.errorOf(statement);
    });
    EXPECT_EQ(std::future_status::timeout, worker.wait_for(300ms));
    stopTime = std::chrono::steady_clock::now();
    EXPECT_THAT(worker.get(), StartsWith(error));
  };
  expectToEnd(
      "INSERT INTO T(json) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
      "SELECT i FROM n",
      "interrupted");
  EXPECT_THAT(database.rows(), IsEmpty());
  SqlDatabaseAdapter other(file_);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE").boSuccess());
  expectToEnd("DELETE FROM T", "database is locked");
}

TEST_F(SqlDatabaseAdapterTest, KeepsOtherThreadsOutOfATransaction) {
  TestDatabase database(file_);
  const auto pairs = "SELECT count(*) / 2, count(*) % 2 FROM T WHERE json = 'paired'";
  auto batches = std::async(std::launch::async, [&] {
    for (int i = 0; i < 40; ++i) {
      const auto guard = database.beginTransaction();
      EXPECT_TRUE(database.insert("paired"));
      EXPECT_EQ(i % 2 == 0, database.insert(i % 2 == 0 ? "paired" : "'"));
    }
  });
  int singles = 0;
  for (; batches.wait_for(0s) != std::future_status::ready; ++singles) {
    EXPECT_TRUE(database.insert("single"));
    EXPECT_EQ("0", database.execute(pairs).result().at(0).at(1));
  }
  EXPECT_GT(singles, 0);
  EXPECT_EQ((Rows{{"20", "0"}}), database.execute(pairs).result());
}

}  // namespace qel::db::sql
