#include <chrono>
#include <filesystem>
#include <functional>
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
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
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
  write(directory_ / "plain", "");
  fs::create_directory(directory_ / "sub.db");
  const std::string directory = directory_.string();
  const struct {
    fs::path file;
    std::string error;
  } cases[] = {
      {directory_ / "missing" / "T.db",
       "cannot keep databases in \"" + directory + "/missing\": No such file or directory"},
      {directory_ / "plain" / "T.db",
       "cannot keep databases in \"" + directory + "/plain\": Not a directory"},
      {directory_ / "sub.db", "cannot open the database \"" + directory +
                                  "/sub.db\": unable to open database file: Is a directory"},
      {"/proc/T.db", "cannot keep databases in \"/proc\": No such file or directory"},
  };
  for (const auto& [file, error] : cases) {
    EXPECT_EQ(error, openingError(file));
  }
  EXPECT_TRUE(isFree()) << "a database that could not be opened claims nothing";
}

TEST_F(DatabaseFileTest, TakesAnyNameAsAPathAndKeepsTheFileToItsOwner) {
  umask(0);
  fs::current_path(directory_);
  const char* names[] = {"T.db", "file:x.db?mode=memory", "Bürö 図面 %20#.db", ":memory:"};
  for (const std::string name : names) {
    SqlDatabaseAdapter database(utilities::pathFromUtf8(name));
    createTable(database);
    const auto guard = database.beginTransaction();
    EXPECT_TRUE(database.execute("INSERT into T(json) VALUES ('a')").boSuccess());
    for (const std::string suffix : {"", "-journal"}) {
      const fs::path file = directory_ / (name + suffix);
      EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(file).permissions())
          << file;
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
  const struct {
    const char* name;
    std::function<std::string(std::string)> damage;
    const char* reason;  // none for a file that is kept
    const char* rowsLeft;
  } cases[] = {
      {"sound", [](std::string bytes) { return bytes; }, nullptr, "1"},
      {"empty", [](const std::string&) { return ""; }, nullptr, "0"},
      {"text", [](const std::string&) { return "no database"; }, "file is not a database", "0"},
      {"zeros", [](std::string bytes) { return std::string(bytes.size(), '\0'); },
       "file is not a database", "0"},
      {"a page short", [](std::string bytes) { return bytes.substr(0, bytes.size() - 4096); },
       "database disk image is malformed", "0"},
      {"a byte short", [](std::string bytes) { return bytes.substr(0, bytes.size() - 1); },
       "the file is truncated", "0"},
      {"bad schema", [](std::string bytes) { return bytes.replace(100, 3996, 3996, '\x0d'); },
       "database disk image is malformed", "0"},
  };
  for (const auto& [name, damage, reason, rowsLeft] : cases) {
    SCOPED_TRACE(name);
    const std::string damaged = damage(soundFile());
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
    fs::remove(file_);
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
  int opened[2];
  int released[2];
  ASSERT_EQ(0, pipe(opened) + pipe(released));
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
