#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "host/QelUtilities/Exception.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::log::analytics {
namespace {

using namespace testing;

std::vector<std::string> namesOf(const std::vector<std::filesystem::path>& files) {
  std::vector<std::string> names;
  names.reserve(files.size());
  for (const auto& file : files) {
    names.push_back(file.filename().string());
  }
  return names;
}

TEST(RecordedFilesTest, AreRemovedOnceNoClientUsesThem) {
  const test::TemporaryDirectory directory;
  for (const auto* const name :
       {"ItemDatabase.db.corrupt-20261120T000000Z-wal", "SupportDatabase.db-shm", "host.log",
        "notes", "ItemDatabase.dbx"}) {
    test::write(directory.path() / name, "x");
  }
  {
    CipDatabaseClient client;
    client.initialize(directory.text());
    EXPECT_THROW(removeRecordings(directory.path()), qel::exception);
  }
  const auto isHostFile = [](std::string_view name) {
    return name == "host.log" || name == "Databases.lock";
  };
  const auto files = recordedFiles(directory.path(), isHostFile);
  EXPECT_THAT(namesOf(files),
              ElementsAre("ItemDatabase.db", "ItemDatabase.db.corrupt-20261120T000000Z-wal",
                          "SupportDatabase.db-shm", "host.log", "Databases.lock"));

  const auto refuse = [&](const auto& found) { return found != files; };
  EXPECT_THAT(removeRecordings(directory.path(), isHostFile, refuse), IsEmpty());
  EXPECT_EQ(recordedFiles(directory.path(), isHostFile), files);
  const test::TemporaryDirectory empty;
  EXPECT_THAT(removeRecordings(empty.path(), {}, [](const auto&) { return false; }), IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(empty.path()));
  const auto removed = removeRecordings(directory.path(), [&](std::string_view name) {
    EXPECT_THROW(CipDatabaseClient().initialize(directory.text()), qel::exception);
    return isHostFile(name);
  });
  ASSERT_EQ(removed.size(), files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(removed[i].file, files[i]);
    EXPECT_FALSE(removed[i].error);
  }
  EXPECT_EQ(removed[1].size, 1);
  EXPECT_THAT(recordedFiles(directory.path(), isHostFile), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(directory.path() / "ItemDatabase.dbx"));

  CipDatabaseClient().initialize(directory.text());
}

}  // namespace
}  // namespace qel::log::analytics
