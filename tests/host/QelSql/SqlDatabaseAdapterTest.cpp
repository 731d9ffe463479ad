#include <atomic>
#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/QelLog/LogManager.h"
#include "host/QelSql/DatabaseFile.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"
#include "tests/support/Files.h"
#include "tests/support/Logged.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::db::sql {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace std::string_literals;
using std::chrono::steady_clock;
using test::contentOf;
using test::write;
using namespace testing;
using utilities::Patience;
using Rows = Result::Rows;

const std::string creation =
    "CREATE TABLE IF NOT EXISTS T (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT)";
const std::string inUse = "another thread uses the database, and this one waits no longer";

/// A database with a table T.
class TestDatabase : public SqlDatabaseAdapter {
 public:
  explicit TestDatabase(const fs::path& file) : SqlDatabaseAdapter(file) {
    EXPECT_EQ("", errorOf("PRAGMA auto_vacuum = INCREMENTAL;"));
    EXPECT_EQ("", errorOf(creation));
  }

  std::string errorOf(const std::string& statement) {
    return execute(statement).sErrorMessageGet();
  }
  bool insert(const std::string& json) {
    return execute("INSERT into T(json) VALUES ('" + json + "')").boSuccess();
  }
  Rows rows() { return selectAll("T").result(); }
};

class SqlDatabaseAdapterTest : public testing::Test {
 protected:
  SqlDatabaseAdapterTest() {
    fs::create_directory(directory_);
    log::LogManager::instance().configure({.standardError = false, .file = logFile_});
  }

  std::string logged() const { return test::loggedIn(logFile_); }

  std::vector<fs::path> asideFiles() const { return asideFiles(directory_); }
  static std::vector<fs::path> asideFiles(const fs::path& directory) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(directory)) {
      if (entry.path().filename().string().starts_with("T.db.corrupt-")) {
        files.push_back(entry.path());
      }
    }
    return files;
  }

  const test::TemporaryDirectory temporary_;
  const fs::path logFile_ = temporary_.path() / "log.txt";
  const fs::path directory_ = temporary_.path() / "data";
  const fs::path file_ = directory_ / "T.db";
};

TEST_F(SqlDatabaseAdapterTest, TellsWhyItCannotBeOpened) {
  fs::permissions(temporary_.path(), fs::perms::all);
  fs::permissions(directory_, fs::perms::all);
  fs::create_directories(directory_ / "sub.db");
  write(directory_ / "plain", "");
  write(directory_ / "sub.db" / "Databases.lock", "");
  fs::permissions(directory_ / "sub.db" / "Databases.lock", fs::perms(0666));
  fs::permissions(directory_ / "plain", fs::perms(0444));
  const bool asRoot = geteuid() == 0 && seteuid(65534) == 0;  // Root may write everywhere.
  const std::string keep = "cannot keep databases in \"" + directory_.string();
  const std::string open = "cannot open the database \"" + directory_.string();
  const std::pair<std::string, std::string> reasons[] = {
      {"missing/T.db", keep + "/missing\": No such file or directory"},
      {"plain/T.db", keep + "/plain\": Not a directory"},
      {"sub.db/T.db", keep + "/sub.db\": Permission denied"},
      {"sub.db", open + "/sub.db\": unable to open database file: Is a directory"},
      {"plain", open + "/plain\": the file is not writable"},
  };
  for (const auto& [name, reason] : reasons) {
    const fs::path file = directory_ / name;
    EXPECT_THAT([&file] { SqlDatabaseAdapter{file}; }, ThrowsMessage<qel::exception>(reason));
  }
  EXPECT_EQ(0, asRoot ? seteuid(0) : 0);
}

TEST_F(SqlDatabaseAdapterTest, TakesAnyNameAsAPathAndKeepsTheFileToItsOwner) {
  umask(0);
  fs::current_path(directory_);
  for (const std::string name :
       {"T.db", "file:x.db?mode=memory", "Bürö 図面 %20#.db", ":memory:"}) {
    TestDatabase database(utilities::pathFromUtf8(name));
    const auto guard = database.beginTransaction();
    EXPECT_TRUE(database.insert("a"));
    for (const auto& file : {directory_ / name, directory_ / (name + "-journal")}) {
      EXPECT_EQ(fs::perms(0600), fs::status(file).permissions()) << file;
    }
  }
}

TEST_F(SqlDatabaseAdapterTest, SetsACorruptFileAsideOnOpening) {
  EXPECT_TRUE(TestDatabase(file_).insert(std::string(100'000, 'x')));
  const std::string sound = contentOf(file_);
  const std::size_t size = sound.size();
  const std::vector<std::pair<std::string, std::string>> reasons = {
      {"no database", "file is not a database"},
      {sound.substr(0, size - 4096), "database disk image is malformed"},
      {sound.substr(0, size - 1), "the file is truncated"},
      {sound.substr(0, 100) + std::string(size - 100, '\r'), "database disk image is malformed"},
  };
  for (const auto& [damaged, reason] : reasons) {
    write(file_, damaged);
    EXPECT_THAT(TestDatabase(file_).rows(), IsEmpty());
    const auto aside = asideFiles();
    ASSERT_THAT(aside, SizeIs(1)) << reason;
    EXPECT_TRUE(damaged == contentOf(aside[0])) << reason;
    EXPECT_THAT(logged(),
                EndsWith("error qel.db.sql.SqlDatabaseAdapter: database \"" + file_.string() +
                         "\" is corrupt (" + reason + "); it was set aside as \"" +
                         aside[0].string() + "\" and a fresh one is begun\n"));
    fs::remove(aside[0]);
  }
}

TEST_F(SqlDatabaseAdapterTest, GoesOnWithAFreshFileWhenItsOwnTurnsOutCorrupt) {
  const fs::path moved = temporary_.path() / "moved";
  for (const bool inTransaction : {false, true}) {
    fs::remove_all(directory_);
    fs::create_directory(directory_);
    EXPECT_TRUE(TestDatabase(file_).insert(std::string(100'000, 'x')));
    EXPECT_TRUE(TestDatabase(file_).insert("old"));
    const std::string header = contentOf(file_).substr(0, 24);
    const auto damage = [&] { write(file_, header + std::string(100'000, '\xee')); };

    TestDatabase database(file_);
    EXPECT_THAT(database.rows(), SizeIs(2));
    damage();
    {
      const auto guard = inTransaction ? database.beginTransaction() : ScopeGuard();
      EXPECT_FALSE(database.insert("lost"));
      EXPECT_THAT(asideFiles(), SizeIs(inTransaction ? 0 : 1)) << "a transaction is not disturbed";
    }
    EXPECT_THAT(asideFiles(), SizeIs(1));
    for (int times = 0; times < 2; ++times) {
      EXPECT_TRUE(database.insert("a"));
      EXPECT_EQ((Rows{{"3", "a"}}), database.rows()) << "above the IDs of the file before";
      EXPECT_TRUE(database.deleteIds("T", "3").boSuccess());
      EXPECT_EQ("", database.errorOf("DELETE FROM sqlite_sequence WHERE name = 'T'"));
    }
    EXPECT_EQ((Rows{{"2"}}), database.execute("PRAGMA auto_vacuum").result());
    EXPECT_EQ((Rows{{"2"}}), database.execute("PRAGMA synchronous").result());

    damage();
    fs::rename(directory_, moved);
    for (int times = 0; times < 2; ++times) {
      EXPECT_FALSE(database.insert("lost"));
    }
    EXPECT_EQ("the corrupt database file cannot be replaced", database.errorOf("SELECT 1"));
    EXPECT_THAT(logged(),
                EndsWith("is corrupt and cannot be replaced yet: cannot open the database \"" +
                         file_.string() + "\": No such file or directory\n"));
    fs::rename(moved, directory_);
    EXPECT_TRUE(database.insert("b"));
    EXPECT_EQ((Rows{{"4", "b"}}), database.rows());
    EXPECT_THAT(asideFiles(), SizeIs(2));
  }
}

/// A scanner, for example, that looks at each new file.
TEST_F(SqlDatabaseAdapterTest, GoesOnWithAFreshFileThatIsHeldAtOnce) {
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

TEST_F(SqlDatabaseAdapterTest, FindsAnUnusedNameForACorruptFileAndItsJournal) {
  const auto now = std::chrono::system_clock::from_time_t(1795253405);
  for (const std::string number : {"", "-2", "-3"}) {
    write(file_, "");
    write(file_.string() + "-journal", number);
    const std::string name = file_.string() + ".corrupt-20261121T093005Z" + number;
    EXPECT_EQ(name, setAside(file_, now));
    EXPECT_EQ(number, contentOf(name + "-journal"));
  }
}

TEST_F(SqlDatabaseAdapterTest, RunsOneStatementAndYieldsRowsAsTexts) {
  TestDatabase database(file_);
  EXPECT_EQ((Rows{{"a\0b"s, "", "", "1.5", "-7"}, {"2", "c", "d", "e", "f"}}),
            database
                .execute("VALUES ('a' || char(0) || 'b', NULL, '', 1.5, -7),"
                         "('2', 'c', 'd', 'e', 'f') ; \r\n\t")
                .result());
  const std::map<std::string, std::string> errors = {
      {"INSERT into T(json) VALUES ('a'); DROP TABLE T", "text follows the statement"},
      {"INSERT into T(json) VALUES ('a') -- b\n; c", "text follows the statement"},
      {"INSERT into T(json) VALUES ('a\0b')"s, "the statement holds a NUL character"},
      {" ; \n", "the statement is empty"},
      {"INSERT into U(json) VALUES ('a')", "no such table: U"},
  };
  for (const auto& [statement, error] : errors) {
    EXPECT_EQ(error, database.errorOf(statement)) << statement;
  }
  EXPECT_THAT(database.rows(), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty()) << "outside a transaction the result alone tells";
}

TEST_F(SqlDatabaseAdapterTest, StoresATransactionWholeOrNotAtAll) {
  TestDatabase database(file_);
  {
    const auto guard = database.beginTransaction();
    EXPECT_TRUE(database.insert("first"));
    {
      const auto inner = database.beginTransaction();
      EXPECT_FALSE(database.insert("secret'"));
    }
    EXPECT_EQ("not run, since the transaction has failed: unrecognized token: \"'secret'')\"",
              database.errorOf("SELECT * FROM T"));
    EXPECT_FALSE(database.insert("third"));
  }
  EXPECT_THAT(logged(), MatchesRegex("[^\n]*error qel.db.sql.SqlDatabaseAdapter: database \"" +
                                     file_.string() +
                                     "\": a statement failed, so nothing of its transaction is "
                                     "stored: error at byte 28 of the statement\n"));
  EXPECT_THAT(database.rows(), IsEmpty());
  {
    const auto guard = database.beginTransaction();
    const auto inner = database.beginTransaction();
    EXPECT_TRUE(database.insert("fourth"));
    EXPECT_TRUE(database.insert("fifth"));
  }
  EXPECT_EQ((Rows{{"1", "fourth"}, {"2", "fifth"}}), database.rows());
}

TEST_F(SqlDatabaseAdapterTest, KeepsOtherThreadsOutOfATransaction) {
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

TEST_F(SqlDatabaseAdapterTest, OpensAFileThatIsHeldAndMakesUpForItsSchemaLater) {
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

TEST_F(SqlDatabaseAdapterTest, AThreadWaitsInOneCallAsLongAsItsPatienceLasts) {
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

TEST_F(SqlDatabaseAdapterTest, AWorkerWaitsUntilTheFileIsFree) {
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

TEST_F(SqlDatabaseAdapterTest, KeepsAFileThatRowsCanBeStoredIn) {
  const std::string key = "(ID INTEGER PRIMARY KEY AUTOINCREMENT, ";
  const struct {
    std::string creation;
    bool serves;
  } files[] = {
      {"TABLE \"t\" (\"id\" integer primary key, 'JSON')", true},
      {"TABLE T" + key + "json TEXT, more TEXT, written DATETIME NOT NULL DEFAULT 0)", true},
      {"TABLE T" + key + "text TEXT)", false},
      {"TABLE T" + key + "other TEXT, json TEXT)", false},
      {"TABLE T(ID INTEGER, json TEXT)", false},
      {"TABLE T(ID INTEGER, json TEXT, PRIMARY KEY(ID, json))", false},
      {"TABLE T(ID INT PRIMARY KEY, json TEXT)", false},
      {"TABLE T(ID INTEGER PRIMARY KEY DESC, json TEXT)", false},
      {"TABLE T(ID INTEGER PRIMARY KEY, json TEXT) WITHOUT ROWID", false},
      {"TABLE T" + key + "json TEXT, more TEXT NOT NULL)", false},
      {"VIEW T AS SELECT 1 AS ID, 'x' AS json", false},
  };
  for (const auto& [making, serves] : files) {
    const test::TemporaryDirectory directory;
    const fs::path file = directory.path() / "T.db";
    SqlDatabaseAdapter(file).execute("CREATE " + making);
    SqlDatabaseAdapter(file).execute("INSERT INTO T(ID, json) VALUES (7, 'old')");
    SqlDatabaseAdapter database(file);
    EXPECT_EQ(serves, database.execute(creation).boSuccess()) << making;
    EXPECT_TRUE(database.execute("INSERT into T(json) VALUES ('new')").boSuccess()) << making;
    EXPECT_EQ(serves ? (Rows{{"old"}, {"new"}}) : (Rows{{"new"}}),
              database.execute("SELECT json FROM T ORDER BY ID").result())
        << making;
    EXPECT_THAT(asideFiles(directory.path()), SizeIs(serves ? 0 : 1)) << making;
  }
}

TEST_F(SqlDatabaseAdapterTest, KeepsTablesWhoseKeyHasAnotherNameOrThatHaveNone) {
  for (const std::string columns : {"(number INTEGER PRIMARY KEY AUTOINCREMENT, t)", "(t)"}) {
    const std::string table = "Other" + std::to_string(columns.size());
    for (int opening = 0; opening < 2; ++opening) {
      SqlDatabaseAdapter database(file_);
      EXPECT_TRUE(
          database.execute("CREATE TABLE IF NOT EXISTS " + table + ' ' + columns).boSuccess());
      EXPECT_TRUE(database.execute("INSERT INTO " + table + "(t) VALUES (1)").boSuccess());
    }
  }
}

TEST_F(SqlDatabaseAdapterTest, MakesAFileShrinkableOnceAWorkerHasTime) {
  SqlDatabaseAdapter(file_).execute("CREATE TABLE T(ID INTEGER PRIMARY KEY AUTOINCREMENT, json)");
  SqlDatabaseAdapter(file_).execute("INSERT INTO T(ID, json) VALUES (7, 'old')");
  TestDatabase database(file_);
  EXPECT_TRUE(database.insert("new"));
  EXPECT_EQ((Rows{{"0"}}), database.execute("PRAGMA auto_vacuum").result());
  const Patience worker(Patience::unlimited);
  utilities::setExitDeadline(1h);
  EXPECT_EQ((Rows{{"0"}}), database.execute("PRAGMA auto_vacuum").result()) << "there is no time";
  utilities::setExitDeadline(std::nullopt);
  EXPECT_EQ((Rows{{"7", "old"}, {"8", "new"}}), database.rows());
  EXPECT_EQ((Rows{{"2"}}), database.execute("PRAGMA auto_vacuum").result());
}

}  // namespace
}  // namespace qel::db::sql
