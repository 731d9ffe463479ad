// Plays every notification there is with the program itself.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/StoredEvent.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/sample-host/NotificationTable.h"

namespace qel::samplehost {
namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;

const std::filesystem::path everything = QEL_SOURCE_DIR "/tests/tools/sample-host/everything.jsonl";
const std::filesystem::path workingDay = QEL_SOURCE_DIR "/samples/session.jsonl";

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator(stream), {}};
}

std::vector<std::string> linesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::size_t countOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

/// What is stored for support when the script is played, without the memory usage.
std::vector<std::string> storedItems(const std::filesystem::path& script,
                                     const std::filesystem::path& directory) {
  const auto command = QEL_SAMPLE_HOST " --no-sending --directory " + directory.string() +
                       " --session " + script.string() + " >" + (directory / "output").string() +
                       " 2>&1";
  // NOLINTNEXTLINE(cert-env33-c,bugprone-command-processor): the test's own command
  EXPECT_EQ(std::system(command.c_str()), 0) << contentOf(directory / "output");
  qel::db::sql::SqlDatabaseAdapter database(directory / "SupportDatabase.db");
  std::vector<std::string> items;
  for (auto& row : database
                       .execute("SELECT json FROM Items WHERE"
                                " json_extract(json, '$.Category') <> 'MemoryUsage' ORDER BY ID")
                       .result()) {
    items.push_back(test::summaryOf(row.front()));
  }
  return items;
}

TEST(EveryNotificationTest, IsStoredAsExpectedWithEveryEnumerator) {
  const test::TemporaryDirectory directory;
  auto expected = everything;
  EXPECT_THAT(storedItems(everything, directory.path()),
              ElementsAreArray(linesOf(expected.replace_extension("items"))));

  const auto log = contentOf(directory.path() / "qel-sample-host.log");
  EXPECT_EQ(countOf("qel.samplehost.assert", log), 1U) << log;
  EXPECT_THAT(log, HasSubstr("IssueListStorageListener::issuesRemoved"));
}

TEST(EveryNotificationTest, IsInTheSampleSession) {
  for (const auto& script : {everything, workingDay}) {
    const auto text = contentOf(script);
    for (const auto notifications :
         {applicationNotifications(), projectNotifications(), issueNotifications()}) {
      for (const auto& notification : notifications) {
        EXPECT_THAT(text, HasSubstr("{\"notify\": \"" + std::string(notification.name) + "\""))
            << script;
      }
    }
    std::istringstream stream(text);
    EXPECT_NO_THROW(readSessionScript(stream, script.string()));
  }
}

}  // namespace
}  // namespace qel::samplehost
