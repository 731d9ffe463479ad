#include <chrono>
#include <future>

#include "host/QelUtilities/Patience.h"
#include "tests/host/QelSql/SqlDatabaseTest.h"

namespace qel::db::sql {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using namespace testing;
using utilities::Patience;

const std::string inUse = "another thread uses the database, and this one waits no longer";
const auto isAQuarterOfASecond = AllOf(Ge(250ms), Lt(450ms));

template <typename Call>
steady_clock::duration timeOf(const Call& call) {
  const auto begin = steady_clock::now();
  call();
  return steady_clock::now() - begin;
}

using WaitingTest = SqlDatabaseTest;

TEST_F(WaitingTest, OpensAHeldFileAndChecksItWhenItIsFree) {
  SqlDatabaseAdapter other(file_);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE").boSuccess());
  const Patience none(Patience::none);
  SqlDatabaseAdapter database(file_);
  EXPECT_FALSE(database.execute(creation).boSuccess());
  SqlDatabaseAdapter later(file_);
  EXPECT_THAT(logged(), EndsWith("is held by another connection; it is checked when it is free\n"));
  EXPECT_TRUE(other.execute("COMMIT").boSuccess());
  EXPECT_TRUE(database.execute("INSERT into T(json) VALUES ('a')").boSuccess());
  test::write(file_, "no database");
  EXPECT_FALSE(later.selectAll("T").boSuccess());
  EXPECT_THAT(asideFiles(), SizeIs(1)) << "it was not checked before";
}

TEST_F(WaitingTest, AThreadWaitsInOneCallAsLongAsItsPatienceLasts) {
  TestDatabase database(file_);
  SqlDatabaseAdapter other(file_);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE").boSuccess());
  const auto statement = [&] {
    EXPECT_EQ("database is locked by another connection, and this thread waits no longer",
              database.errorOf("SELECT * FROM T"));
  };
  EXPECT_THAT(timeOf(statement), isAQuarterOfASecond) << "without a patience of its own";
  EXPECT_THAT(timeOf([&] {
                const Patience worker(Patience::unlimited);
                const Patience patience(Patience::ofHost);
                const Patience inner(Patience::unlimited);
                statement();
                statement();
              }),
              isAQuarterOfASecond)
      << "the shortest counts, once for all statements";

  auto worker = std::async(std::launch::async, [&] {
    const Patience patience(Patience::unlimited);
    EXPECT_TRUE(database.insert("a"));
  });
  EXPECT_EQ(std::future_status::timeout, worker.wait_for(500ms));
  EXPECT_THAT(timeOf([&] {
                const Patience patience(Patience::ofHost);
                EXPECT_EQ(inUse, database.errorOf("SELECT * FROM T"));
                const auto guard = database.beginTransaction();
                const auto inner = database.beginTransaction();
                EXPECT_TRUE(other.execute("COMMIT").boSuccess());
                worker.get();
                EXPECT_EQ("not run, since the transaction has failed: " + inUse,
                          database.errorOf("INSERT into T(json) VALUES ('b')"));
              }),
              isAQuarterOfASecond);
  EXPECT_TRUE(database.insert("c"));
  EXPECT_EQ((Rows{{"1", "a"}, {"2", "c"}}), database.rows());
  EXPECT_THAT(logged(), AllOf(HasSubstr("a statement was given up: database is locked"),
                              HasSubstr("a statement was given up: another thread uses"),
                              HasSubstr("BEGIN failed, so nothing of its transaction is stored: "
                                        "another thread uses")));
}

TEST_F(WaitingTest, AWorkerWaitsUntilTheFileIsFree) {
  TestDatabase database(file_);
  SqlDatabaseAdapter other(file_);
  EXPECT_TRUE(other.execute("BEGIN").boSuccess());
  EXPECT_TRUE(other.selectAll("T").boSuccess());
  auto batch = std::async(std::launch::async, [&] {
    const Patience patience(Patience::unlimited);
    const auto guard = database.beginTransaction();
    EXPECT_TRUE(database.insert("a"));
  });  // COMMIT meets the lock of a reader.
  EXPECT_EQ(std::future_status::timeout, batch.wait_for(5500ms));
  EXPECT_TRUE(other.execute("COMMIT").boSuccess());
  batch.get();
  EXPECT_THAT(database.rows(), SizeIs(1));
  EXPECT_THAT(logged(),
              MatchesRegex("[^\n]*\" is held by another connection; waiting until it is free\n"
                           "[^\n]*\" is free again\n"));
}

TEST_F(WaitingTest, KeepsOtherThreadsOutOfATransaction) {
  TestDatabase database(file_);
  const auto pairs = "SELECT count(*) / 2, count(*) % 2 FROM T WHERE json = 'paired'";
  auto batches = std::async(std::launch::async, [&] {
    for (int i = 0; i < 40; ++i) {
      const auto guard = database.beginTransaction();
      EXPECT_TRUE(database.insert("paired"));
      EXPECT_EQ(i % 2 == 0, database.insert(i % 2 == 0 ? "paired" : "'"));
    }
  });
  while (batches.wait_for(0s) != std::future_status::ready) {
    EXPECT_TRUE(database.insert("single"));
    EXPECT_EQ("0", database.execute(pairs).result().at(0).at(1));
  }
  EXPECT_EQ((Rows{{"20", "0"}}), database.execute(pairs).result());
}

}  // namespace
}  // namespace qel::db::sql
