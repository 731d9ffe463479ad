#include <array>
#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "host/QelSql/DatabaseFile.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tests/host/QelSql/DatabaseFixture.h"

namespace qel::db::sql {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using Rows = Result::Rows;

std::string openingError(const fs::path& file) {
  try {
    const SqlDatabaseAdapter database(file);
  } catch (const qel::exception& failure) {
    return failure.what();
  }
  return "";
}

class DatabaseFileTest : public DatabaseTest {
 protected:
  /// A sound file of a good many pages.
  std::string soundFile() {
    {
      SqlDatabaseAdapter database(file_);
      createTable(database);
      EXPECT_TRUE(
          database.execute("INSERT into T(json) VALUES (hex(zeroblob(50000)))").boSuccess());
    }
    return contentOf(file_);
  }

  std::vector<fs::path> asideFiles() const {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(directory_)) {
      if (entry.path().filename().string().starts_with("T.db.corrupt-")) {
        files.push_back(entry.path());
      }
    }
    return files;
  }

  /// Whether another process could claim the directory.
  bool isFree() const {
    const int file = open((directory_ / "Databases.lock").c_str(), O_RDWR);
    const bool free = flock(file, LOCK_EX | LOCK_NB) == 0;
    close(file);
    return free;
  }
};

TEST_F(DatabaseFileTest, TellsWhyItCannotBeOpened) {
  fs::permissions(directory_, fs::perms::all);
  fs::create_directories(directory_ / "sub.db");
  write(directory_ / "plain", "");
  write(directory_ / "sub.db" / "Databases.lock", "");
  fs::permissions(directory_ / "sub.db" / "Databases.lock", fs::perms(0666));
  fs::permissions(directory_ / "plain", fs::perms(0444));
  const bool asRoot = geteuid() == 0 && seteuid(65534) == 0;  // Root may write everywhere.
  const std::map<fs::path, std::string> reasons = {
      {"missing/T.db", "cannot keep databases in \"DIR/missing\": No such file or directory"},
      {"plain/T.db", "cannot keep databases in \"DIR/plain\": Not a directory"},
      {"sub.db/T.db", "cannot keep databases in \"DIR/sub.db\": Permission denied"},
      {"sub.db",
       "cannot open the database \"DIR/sub.db\": unable to open database file: Is a directory"},
      {"plain", "cannot open the database \"DIR/plain\": the file is not writable"},
  };
  for (auto [name, reason] : reasons) {
    EXPECT_EQ(reason.replace(reason.find("DIR"), 3, directory_.string()),
              openingError(directory_ / name));
  }
  EXPECT_EQ(0, asRoot ? seteuid(0) : 0);
  EXPECT_TRUE(isFree()) << "a database that could not be opened claims nothing";
}

TEST_F(DatabaseFileTest, TakesAnyNameAsAPathAndKeepsTheFileToItsOwner) {
  umask(0);
  fs::current_path(directory_);
  for (const std::string name :
       {"T.db", "file:x.db?mode=memory", "Bürö 図面 %20#.db", ":memory:"}) {
    SqlDatabaseAdapter database(utilities::pathFromUtf8(name));
    createTable(database);
    const auto guard = database.beginTransaction();
    EXPECT_TRUE(database.execute("INSERT into T(json) VALUES ('a')").boSuccess());
    for (const auto& file : {directory_ / name, directory_ / (name + "-journal")}) {
      EXPECT_EQ(fs::perms(0600), fs::status(file).permissions()) << file;
    }
  }
}

TEST_F(DatabaseFileTest, ShrinksAfterRowsAreDeleted) {
  SqlDatabaseAdapter database(file_);
  createTable(database);
  database.execute("INSERT into T(json) VALUES (hex(zeroblob(1000000)))");
  EXPECT_GT(fs::file_size(file_), 2'000'000U);
  EXPECT_TRUE(database.deleteIds("T", "1").boSuccess());
  const Result result = database.execute("PRAGMA incremental_vacuum;");
  EXPECT_TRUE(result.boSuccess());
  EXPECT_THAT(result.result(), IsEmpty());
  EXPECT_LT(fs::file_size(file_), 50'000U);
}

TEST_F(DatabaseFileTest, SetsACorruptFileAsideOnOpening) {
  struct Case {
    const char* name;
    std::string damaged;
    const char* reason;  // none for a file that is kept
    const char* rowsLeft;
  };
  const std::string sound = soundFile();
  const std::size_t size = sound.size();
  const std::vector<Case> cases = {
      {"sound", sound, nullptr, "1"},
      {"empty", "", nullptr, "0"},
      {"text", "no database", "file is not a database", "0"},
      {"zeros", std::string(size, '\0'), "file is not a database", "0"},
      {"a page short", sound.substr(0, size - 4096), "database disk image is malformed", "0"},
      {"a byte short", sound.substr(0, size - 1), "the file is truncated", "0"},
      {"bad schema", sound.substr(0, 100) + std::string(size - 100, '\r'),
       "database disk image is malformed", "0"},
  };
  for (const auto& [name, damaged, reason, rowsLeft] : cases) {
    SCOPED_TRACE(name);
    write(file_, damaged);
    {
      SqlDatabaseAdapter database(file_);
      createTable(database);
      EXPECT_EQ((Rows{{rowsLeft}}), database.execute("SELECT count(*) FROM T").result());
    }
    const auto aside = asideFiles();
    ASSERT_THAT(aside, SizeIs(reason == nullptr ? 0U : 1U));
    if (reason != nullptr) {
      EXPECT_EQ(damaged, contentOf(aside[0]));
      EXPECT_THAT(logged(),
                  EndsWith("error qel.db.sql.SqlDatabaseAdapter: database \"" + file_.string() +
                           "\" is corrupt (" + reason + "); it was set aside as \"" +
                           aside[0].string() + "\" and a fresh one is begun\n"));
      fs::remove(aside[0]);
    }
  }
}

TEST_F(DatabaseFileTest, GoesOnWithAFreshFileWhenItsOwnTurnsOutCorrupt) {
  soundFile();
  SqlDatabaseAdapter database(file_);
  createTable(database);
  const auto insert = [&] { return database.execute("INSERT into T(json) VALUES ('a')"); };
  const std::string header = contentOf(file_).substr(0, 24);
  const auto damage = [&] { write(file_, header + std::string(100'000, '\xee')); };

  damage();
  EXPECT_EQ("database disk image is malformed", insert().sErrorMessageGet());
  EXPECT_TRUE(insert().boSuccess());
  damage();
  {
    const auto guard = database.beginTransaction();
    EXPECT_FALSE(insert().boSuccess());
    EXPECT_THAT(asideFiles(), SizeIs(1));
  }
  EXPECT_TRUE(insert().boSuccess());
  EXPECT_EQ((Rows{{"1", "a"}}), database.selectAll("T").result());
  EXPECT_EQ((Rows{{"2"}}), database.execute("PRAGMA auto_vacuum").result());
  EXPECT_THAT(asideFiles(), SizeIs(2));

  damage();
  fs::rename(file_, directory_ / "out of reach");
  EXPECT_FALSE(insert().boSuccess());
  EXPECT_EQ("the corrupt database file could not be replaced", insert().sErrorMessageGet());
  EXPECT_THAT(logged(), EndsWith("so nothing more is stored in it: the corrupt file cannot be "
                                 "renamed: No such file or directory\n"));
}

TEST_F(DatabaseFileTest, FindsAnUnusedNameForACorruptFileAndItsCompanions) {
  const auto now = std::chrono::system_clock::from_time_t(1795253405);
  for (const std::string number : {"", "-2", "-3"}) {
    for (const std::string companion : {"", "-journal", "-wal", "-shm"}) {
      write(file_.string() + companion, number + companion);
    }
    const std::string name = file_.string() + ".corrupt-20261121T093005Z" + number;
    EXPECT_EQ(name, setAside(file_, now));
    for (const std::string companion : {"", "-journal", "-wal", "-shm"}) {
      EXPECT_EQ(number + companion, contentOf(name + companion));
    }
  }
}

TEST_F(DatabaseFileTest, BelongsToOneProcess) {
  std::array<int, 2> opened{};
  std::array<int, 2> released{};
  ASSERT_EQ(0, pipe(opened.data()) + pipe(released.data()));
  const pid_t child = fork();
  if (child == 0) {
    char byte = 0;
    close(released[1]);
    const SqlDatabaseAdapter database(file_);
    const bool told = ::write(opened[1], &byte, 1) == 1;
    _exit(told && read(released[0], &byte, 1) == 0 ? 0 : 1);
  }
  char byte = 0;
  ASSERT_EQ(1, read(opened[0], &byte, 1));
  EXPECT_EQ('"' + directory_.string() + "\" is in use by another instance of the program",
            openingError(directory_ / "Other.db"));
  close(released[1]);
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);

  std::optional<SqlDatabaseAdapter> one(file_);
  std::optional<SqlDatabaseAdapter> two(directory_ / "." / "Other.db");
  EXPECT_FALSE(isFree());
  one.reset();
  EXPECT_FALSE(isFree());
  two.reset();
  EXPECT_TRUE(isFree());
}

}  // namespace
}  // namespace qel::db::sql
