#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "host/QelUtilities/Exception.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::log::analytics {

using namespace testing;

TEST(RecordedFilesTest, AreRemovedOnceNoClientUsesThem) {
  const test::TemporaryDirectory directory;
  EXPECT_THAT(removeRecordings(directory.path(), {}, [](const auto&) { return false; }), IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
  for (const auto* const name : {"ItemDatabase.db.corrupt-20261120T000000Z-wal",
                                 "SupportDatabase.db-shm", "host.log", "ItemDatabase.dbx"}) {
    test::write(directory.path() / name, "x");
  }
  {
    CipDatabaseClient client;
    client.initialize(directory.text());
    EXPECT_THROW(removeRecordings(directory.path()), qel::exception);
  }
  const auto removed = removeRecordings(directory.path(), [&](std::string_view name) {
    EXPECT_THROW(CipDatabaseClient().initialize(directory.text()), qel::exception);
    return name == "host.log" || name == "Databases.lock";
  });
  std::string names;
  for (const auto& [file, size, error] : removed) {
    names += file.filename().string() + ' ';
    EXPECT_FALSE(error);
  }
  EXPECT_EQ(names,
            "ItemDatabase.db ItemDatabase.db.corrupt-20261120T000000Z-wal "
            "SupportDatabase.db-shm host.log Databases.lock ");
  EXPECT_THAT(recordedFiles(directory.path()), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(directory.path() / "ItemDatabase.dbx"));
  CipDatabaseClient().initialize(directory.text());
}

}  // namespace qel::log::analytics
