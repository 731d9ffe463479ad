#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "host/QelUtilities/Patience.h"
#include "tests/host/QelSql/SqlDatabaseTest.h"
#include "tests/support/Files.h"

namespace qel::db::sql {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using test::contentOf;
using test::write;
using namespace testing;
using utilities::Patience;

const std::string inUse = "another thread uses the database, and this one waits no longer";

using WaitingTest = SqlDatabaseTest;

TEST_F(WaitingTest, OpensAFileThatIsHeldAndMakesUpForItsSchemaLater) {
  SqlDatabaseAdapter other(file_);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE").boSuccess());
  const Patience none(Patience::none);
  SqlDatabaseAdapter database(file_);
  EXPECT_FALSE(database.execute("PRAGMA auto_vacuum = INCREMENTAL;").boSuccess());
  EXPECT_FALSE(database.execute(creation).boSuccess());
  EXPECT_THAT(logged(), EndsWith("is held by another connection; it is checked when it is free\n"));
  EXPECT_TRUE(other.execute("COMMIT").boSuccess());
  EXPECT_TRUE(database.execute("INSERT into T(json) VALUES ('a')").boSuccess());

  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE").boSuccess());
  SqlDatabaseAdapter later(file_);
  EXPECT_TRUE(other.execute("COMMIT").boSuccess());
  write(file_, "no database");
  EXPECT_FALSE(later.selectAll("T").boSuccess());
  EXPECT_THAT(asideFiles(), SizeIs(1)) << "it was not checked before";
}

TEST_F(WaitingTest, AThreadWaitsInOneCallAsLongAsItsPatienceLasts) {
  TestDatabase database(file_);
  SqlDatabaseAdapter other(file_);
  EXPECT_TRUE(other.execute("BEGIN EXCLUSIVE").boSuccess());
  const auto timeOf = [](const auto& call) {
    const auto begin = steady_clock::now();
    call();
    return steady_clock::now() - begin;
  };
  const auto statement = [&] {
    EXPECT_THAT(database.errorOf("SELECT * FROM T"),
                "database is locked by another connection, and this thread waits no longer");
  };
  const auto quarter = AllOf(Ge(250ms), Lt(450ms));
  EXPECT_THAT(timeOf(statement), quarter) << "without any said";
  EXPECT_THAT(timeOf([&] {
                const Patience worker(Patience::unlimited);
                const Patience patience(Patience::ofHost);
                const Patience inner(Patience::unlimited);
                statement();
                statement();
              }),
              quarter)
      << "the shortest counts";

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
              quarter);
  EXPECT_TRUE(database.insert("c"));
  EXPECT_EQ((Rows{{"1", "a"}, {"2", "c"}}), database.rows());
  EXPECT_THAT(logged(), AllOf(HasSubstr("\": a statement was given up: database is locked"),
                              HasSubstr("\": a statement was given up: another thread uses"),
                              HasSubstr("\": BEGIN failed, so nothing of its transaction is "
                                        "stored: another thread uses")));
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
    EXPECT_TRUE(database.insert("b"));
  });  // It is COMMIT that meets the lock of a reader.
  EXPECT_EQ(std::future_status::timeout, batch.wait_for(5500ms));
  EXPECT_TRUE(other.execute("COMMIT").boSuccess());
  batch.get();
  EXPECT_THAT(database.rows(), SizeIs(2));
  EXPECT_THAT(logged(),
              MatchesRegex("[^\n]*\" is held by another connection; waiting until it is free\n"
                           "[^\n]*\" is free again\n"));
}

/// A scanner, for example, that looks at each new file.
TEST_F(WaitingTest, GoesOnWithAFreshFileThatIsHeldAtOnce) {
  TestDatabase database(file_);
  EXPECT_TRUE(database.insert("a"));
  write(file_, contentOf(file_).substr(0, 24) + std::string(100'000, '\xee'));
  std::atomic<bool> isOver{false};
  std::jthread scanner([&] {
    while (asideFiles().empty() && !isOver) {
    }
    SqlDatabaseAdapter other(file_);
    other.execute("BEGIN EXCLUSIVE");
    std::this_thread::sleep_for(500ms);
    other.execute("COMMIT");
  });
  EXPECT_FALSE(database.insert("lost"));
  isOver = true;
  scanner.join();
  EXPECT_TRUE(database.insert("b"));
}

TEST_F(WaitingTest, KeepsOtherThreadsOutOfATransaction) {
  TestDatabase database(file_);
  auto batches = std::async(std::launch::async, [&] {
    for (int i = 0; i < 40; ++i) {
      const auto guard = database.beginTransaction();
      EXPECT_TRUE(database.insert("paired"));
      EXPECT_EQ(i % 2 == 0, database.insert(i % 2 == 0 ? "paired" : "'"));
    }
  });
  while (batches.wait_for(0s) != std::future_status::ready) {
    EXPECT_TRUE(database.insert("single"));
    EXPECT_EQ((Rows{{"0"}}),
              database.execute("SELECT count(*) % 2 FROM T WHERE json = 'paired'").result());
  }
  EXPECT_EQ((Rows{{"40"}}),
            database.execute("SELECT count(*) FROM T WHERE json = 'paired'").result());
}

}  // namespace
}  // namespace qel::db::sql
