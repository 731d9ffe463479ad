#include "tests/host/QelSql/SqlDatabaseAdapterTest.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "tests/support/FileRights.h"

namespace qel::db::sql {
namespace {

/// Ends the rights of an administrator, who may write everywhere, as long as the guard exists.
ScopeGuard asPlainUser() {
#ifdef _WIN32
  return {};
#else
  const bool wasRoot = geteuid() == 0 && seteuid(65534) == 0;
  return ScopeGuard([wasRoot] { EXPECT_EQ(0, wasRoot ? seteuid(0) : 0); });
#endif
}

TEST_F(SqlDatabaseAdapterTest, NamesTheReasonWhenAFileCannotBeOpened) {
  fs::permissions(temporary_.path(), fs::perms::all);
  fs::permissions(directory_, fs::perms::all);
  fs::create_directories(directory_ / "sub.db");
  fs::permissions(write(directory_ / "sub.db" / "Databases.lock", ""), fs::perms(0666));
  fs::permissions(directory_ / "sub.db", fs::perms(0555));
  fs::permissions(write(directory_ / "plain", ""), fs::perms(0444));
  const auto quoted = [&](const std::string& name) {
    return '"' + utilities::utf8FromPath(directory_ / name) + "\": ";
  };
  const std::string keep = "cannot keep databases in ";
  const std::string open = "cannot open the database ";
  std::vector<std::pair<std::string, std::string>> reasons = {
      {"missing/T.db", keep + quoted("missing")},
      {"sub.db", open + quoted("sub.db") + "unable to open database file"},
  };
  if (!onWindows) {
    reasons.emplace_back("plain", open + quoted("plain") + "the file is not writable");
    reasons[0].second += "No such file or directory";
    reasons[1].second += ": Is a directory";
    reasons.emplace_back("sub.db/T.db", keep + quoted("sub.db") + "Permission denied");
  }
  {
    const auto user = asPlainUser();
    for (const auto& [name, reason] : reasons) {
      EXPECT_THAT([file = directory_ / name] { SqlDatabaseAdapter{file}; },
                  ThrowsMessage<qel::exception>(onWindows ? Matcher<std::string>(StartsWith(reason))
                                                          : Matcher<std::string>(reason)));
    }
  }
  fs::permissions(directory_ / "sub.db", fs::perms::owner_all);
  fs::permissions(directory_ / "plain", fs::perms::owner_all);
}

TEST_F(SqlDatabaseAdapterTest, TakesAnyNameAsAPathAndKeepsTheFileToItsOwner) {
  const ScopeGuard returning([before = fs::current_path()] { fs::current_path(before); });
  fs::current_path(directory_);
#ifndef _WIN32
  umask(0);
#endif
  std::vector<std::string> names{"Bürö 図面 %20#.db"};
  if (!onWindows) {
    names.insert(names.end(), {"file:x.db?mode=memory", ":memory:"});
  }
  for (const auto& name : names) {
    TestDatabase database(utilities::pathFromUtf8(name));
    const auto guard = database.beginTransaction();
    EXPECT_TRUE(database.insert("a"));
    for (const auto& file : {name, name + "-journal", "Databases.lock"s}) {
      EXPECT_TRUE(isForOwnerAlone(directory_ / utilities::pathFromUtf8(file))) << file;
    }
  }
}

TEST_F(SqlDatabaseAdapterTest, SetsACorruptFileAsideOnOpening) {
  write(file_, "");
  write(file_.string() + "-journal", "left over");
  EXPECT_TRUE(TestDatabase(file_).insert("in an empty file"));
  EXPECT_THAT(asideFiles(), IsEmpty());
  fs::remove(file_);
  EXPECT_TRUE(TestDatabase(file_).insert(std::string(100'000, 'x')));
  const std::string sound = contentOf(file_);
  const std::pair<std::string, std::string> reasons[] = {
      {"no database", "file is not a database"},
      {sound.substr(0, sound.size() - 1), "the file is truncated"},
      {sound.substr(0, 100) + std::string(100'000, '\r'), "database disk image is malformed"},
  };
  for (const auto& [damaged, reason] : reasons) {
    write(file_, damaged);
    EXPECT_THAT(TestDatabase(file_).rows(), IsEmpty());
    const auto aside = asideFiles();
    ASSERT_THAT(aside, SizeIs(1)) << reason;
    EXPECT_TRUE(damaged == contentOf(aside[0])) << reason;
    EXPECT_THAT(logged(), EndsWith("database \"" + file_.string() + "\" is corrupt (" + reason +
                                   "); it was set aside as \"" + aside[0].string() +
                                   "\" and a fresh one is begun\n"));
    fs::remove(aside[0]);
  }
}

TEST_F(SqlDatabaseAdapterTest, GoesOnWithAFreshFileWhenItsOwnTurnsOutCorrupt) {
  const fs::path moved = temporary_.path() / "moved";
  EXPECT_TRUE(TestDatabase(file_).insert(std::string(100'000, 'x')));
  EXPECT_TRUE(TestDatabase(file_).insert("old"));
  const auto damage = [this, header = contentOf(file_).substr(0, 24)] {
    write(file_, header + std::string(100'000, '\xee'));
  };
  TestDatabase database(file_);
  EXPECT_THAT(database.rows(), SizeIs(2));
  damage();
  EXPECT_FALSE(database.insert("lost"));
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
  std::error_code error;
  fs::rename(directory_, moved, error);
  if (error && onWindows) {
    GTEST_SKIP() << "a directory with an open file cannot be renamed: " << error.message();
  }
  EXPECT_FALSE(database.insert("lost"));
  EXPECT_EQ("the corrupt database file cannot be replaced", database.errorOf("SELECT 1"));
  const auto reason = std::error_code(onWindows ? 3 : ENOENT, std::system_category()).message();
  EXPECT_THAT(logged(),
              EndsWith("is corrupt and cannot be replaced yet: cannot open the database \"" +
                       file_.string() + "\": " + reason + "\n"));
  fs::rename(moved, directory_);
  EXPECT_TRUE(database.insert("b"));
  EXPECT_EQ((Rows{{"4", "b"}}), database.rows());
  EXPECT_THAT(asideFiles(), SizeIs(2));
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

TEST_F(SqlDatabaseAdapterTest, RunsOneStatementAndReturnsRowsAsTexts) {
  TestDatabase database(file_);
  EXPECT_EQ((Rows{{"a\0b"s, "", "1.5", "-7"}, {"2", "c", "d", "e"}}),
            database.execute("VALUES ('a' || char(0) || 'b', NULL, 1.5, -7), ('2', 'c', 'd', 'e');")
                .result());
  const std::pair<std::string, std::string> errors[] = {
      {"INSERT into T(json) VALUES ('a'); DROP TABLE T", "text follows the statement"},
      {"INSERT into T(json) VALUES ('a\0b')"s, "the statement holds a NUL character"},
      {"INSERT into U(json) VALUES ('a')", "no such table: U"},
      {"CREATE TABLE IF NOT EXISTS V (key INTEGER PRIMARY KEY AUTOINCREMENT)", ""},
  };
  for (const auto& [statement, error] : errors) {
    EXPECT_EQ(error, database.errorOf(statement)) << statement;
  }
  EXPECT_THAT(database.rows(), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty()) << "outside a transaction only the result has the error";
}

TEST_F(SqlDatabaseAdapterTest, StoresATransactionWholeOrNotAtAll) {
  TestDatabase database(file_);
  {
    const auto guard = database.beginTransaction();
    {
      const auto inner = database.beginTransaction();
      EXPECT_TRUE(database.insert("first"));
    }
    EXPECT_FALSE(database.insert("secret'"));
    EXPECT_EQ("not run, since the transaction has failed: unrecognized token: \"'secret'')\"",
              database.errorOf("SELECT * FROM T"));
  }
  EXPECT_THAT(logged(),
              EndsWith("error qel.db.sql.SqlDatabaseAdapter: database \"" + file_.string() +
                       "\": a statement failed, so nothing of its transaction is "
                       "stored: error at byte 28 of the statement\n"));
  {
    const auto guard = database.beginTransaction();
    {
      const auto inner = database.beginTransaction();
      EXPECT_FALSE(database.insert("'"));
    }
    EXPECT_FALSE(database.insert("second"));
  }
  EXPECT_THAT(database.rows(), IsEmpty());
}

TEST_F(SqlDatabaseAdapterTest, KeepsAFileThatRowsCanBeStoredIn) {
  const std::string key = "(ID INTEGER PRIMARY KEY AUTOINCREMENT, ";
  const std::pair<std::string, bool> files[] = {
      {"TABLE \"t\" (\"id\" integer primary key, 'JSON')", true},
      {"TABLE T" + key + "json TEXT, more TEXT, written DATETIME NOT NULL DEFAULT 0)", true},
      {"TABLE T" + key + "text TEXT)", false},
      {"TABLE T" + key + "other TEXT, json TEXT)", false},
      {"TABLE T(ID INTEGER, json TEXT)", false},
      {"TABLE T(ID INT PRIMARY KEY, json TEXT)", false},
      {"TABLE T" + key + "json TEXT, more TEXT NOT NULL)", false},
      {"VIEW T AS SELECT 1 AS ID, 'x' AS json", false},
  };
  for (const auto& [table, isKept] : files) {
    SCOPED_TRACE(table);
    emptyDirectory();
    SqlDatabaseAdapter(file_).execute("CREATE " + table);
    SqlDatabaseAdapter(file_).execute("INSERT INTO T(ID, json) VALUES (7, 'old')");
    SqlDatabaseAdapter database(file_);
    EXPECT_EQ(isKept, database.execute(creation).boSuccess());
    EXPECT_TRUE(database.execute("INSERT into T(json) VALUES ('new')").boSuccess());
    EXPECT_EQ(isKept ? (Rows{{"old"}, {"new"}}) : (Rows{{"new"}}),
              database.execute("SELECT json FROM T ORDER BY ID").result());
    EXPECT_THAT(asideFiles(), SizeIs(isKept ? 0 : 1));
  }
}

TEST_F(SqlDatabaseAdapterTest, MakesAFileShrinkableOnceAWorkerHasTime) {
  SqlDatabaseAdapter(file_).execute(creation);
  TestDatabase database(file_);
  EXPECT_TRUE(database.insert("a"));  // on a thread of the host
  const Patience worker(Patience::unlimited);
  setExitDeadline(1h);
  EXPECT_TRUE(database.insert("b"));
  EXPECT_EQ((Rows{{"0"}}), database.execute("PRAGMA auto_vacuum").result());
  setExitDeadline(std::nullopt);
  EXPECT_TRUE(database.insert("c"));
  EXPECT_EQ((Rows{{"2"}}), database.execute("PRAGMA auto_vacuum").result());
}

}  // namespace
}  // namespace qel::db::sql
