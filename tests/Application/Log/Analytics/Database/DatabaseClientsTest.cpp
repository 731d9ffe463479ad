#include <thread>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "tests/support/MemoryDatabaseClient.h"
#include "tests/support/Query.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::log::analytics {
namespace {

using namespace std::chrono_literals;
using namespace testing;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;
constexpr auto noTable = static_cast<CipDatabaseClientInterface::Table>(2);
const std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>> mixedBatch = {
    {"one", Items}, {"machine", Environments}, {"", Items}, {"lost", noTable}, {"two", Items}};

class DatabaseClientsTest : public testing::Test {
 protected:
  void initialize() {
    for (auto* client : both_) {
      client->initialize(directory_.text());
    }
  }

  test::TemporaryDirectory directory_;
  CipDatabaseClient sending_;
  SupportDatabaseClient support_{std::nullopt};
  const std::array<CipDatabaseClientInterface*, 2> both_{&sending_, &support_};
};

TEST_F(DatabaseClientsTest, DoNothingBeforeTheyAreInitialized) {
  for (auto* client : both_) {
    client->insertMultiple({"x"}, Items);
    client->insertMultiple(mixedBatch);
    client->deleteItems({{1, "x"}});
    client->vacuum();
    EXPECT_THAT(client->getAll(Items), Pair(Items, IsEmpty()));
    EXPECT_THAT(client->getAllFromSession("abc"), IsEmpty());
  }
}

TEST_F(DatabaseClientsTest, KeepTheirTablesApart) {
  initialize();
  for (auto* client : both_) {
    client->insertMultiple(mixedBatch);
    EXPECT_THAT(client->getAllItems(), ElementsAre(Pair(1, "one"), Pair(2, "two")));
    EXPECT_THAT(client->getAll(Environments), Pair(Environments, ElementsAre(Pair(1, "machine"))));
    EXPECT_THAT(client->getAll(noTable), Pair(noTable, IsEmpty()));

    std::vector<int> ids{1};
    client->deleteByIds(noTable, ids);
    client->deleteByIds(Items, ids);
    EXPECT_THAT(client->getAllItems(), ElementsAre(Pair(2, "two")));
    client->deleteItems(client->getAllItems());
    client->deleteEnvironments({{1, ""}});
    client->insertMultiple({"three"}, Items);
    client->insertMultiple({"a", "", "b"}, noTable);
    EXPECT_THAT(client->getAllItems(), ElementsAre(Pair(1, "three")));
  }
  EXPECT_THAT(sending_.getAll(Environments).second, IsEmpty());
  EXPECT_THAT(support_.getAll(Environments).second, ElementsAre(Pair(1, "a"), Pair(2, "b")));
}

TEST_F(DatabaseClientsTest, RetentionDeletesOldRowsOfBothTables) {
  initialize();
  support_.insertMultiple({{"old", Items}, {"old", Environments}, {"new", Items}});
  for (const std::string table : {"Items", "Environments"}) {
    test::query(directory_.path() / "SupportDatabase.db",
                "UPDATE " + table + " SET timestamp_utc = '2017-01-01' WHERE json = 'old'");
  }
  SupportDatabaseClient client(3600s);
  client.initialize(directory_.text());
  const auto limit = std::chrono::steady_clock::now() + 30s;
  while (!client.getAll(Environments).second.empty() && std::chrono::steady_clock::now() < limit) {
    std::this_thread::yield();
  }
  EXPECT_THAT(client.getAllItems(), ElementsAre(Pair(2, "new")));
  EXPECT_THAT(client.getAll(Environments).second, IsEmpty());
}

TEST(SupportDatabaseExporterTest, CopiesExactlyTheSessionsRows) {
  const std::string ours = R"({"SessionId": "S", "it's": 1})";
  const test::TemporaryDirectory directory;
  const auto source = std::make_shared<SupportDatabaseClient>(std::nullopt);
  const auto target = std::make_shared<test::MemoryDatabaseClient>();
  SupportDatabaseExporter exporter(source);
  EXPECT_FALSE(exporter.exportLastSessionToSqliteFile("S", target));
  source->initialize(directory.text());
  source->insertMultiple({{R"({"SessionId": "ST"})", Items},
                          {ours, Items},
                          {R"({"SessionId":"S"})", Items},
                          {ours + " ", Items},
                          {ours + "!", Environments}});
  EXPECT_FALSE(exporter.exportLastSessionToSqliteFile("U", target));
  EXPECT_THAT(target->texts(Items), IsEmpty());
  EXPECT_TRUE(exporter.exportLastSessionToSqliteFile("S", target));
  EXPECT_THAT(target->texts(Items), ElementsAre(ours, ours + " "));
  EXPECT_THAT(target->texts(Environments), ElementsAre(ours + "!"));
  EXPECT_TRUE(exporter.exportLastSessionToSqliteFile("ST", target)) << "without an environment";
}

}  // namespace
}  // namespace qel::log::analytics
