#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/DatabaseAdapter.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Logged.h"
#include "tests/support/MemoryDatabaseClient.h"
#include "tests/support/Query.h"
#include "tests/support/Tally.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::log::analytics {

using namespace testing;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;
constexpr auto noTable = static_cast<CipDatabaseClientInterface::Table>(2);

class DatabaseClientsTest : public testing::Test {
 protected:
  const test::TemporaryDirectory directory_;
  const std::filesystem::path sendingFile_ = directory_.path() / "ItemDatabase.db";
  const std::filesystem::path supportFile_ = directory_.path() / "SupportDatabase.db";
  CipDatabaseClient sending_;
  SupportDatabaseClient support_{std::nullopt};
  const std::array<CipDatabaseClientInterface*, 2> both_{&sending_, &support_};
};

TEST_F(DatabaseClientsTest, StoreTextsUnchangedInTheirTablesOnceTheyAreInitialized) {
  for (auto* client : both_) {
    client->insertMultiple({"x"}, Items);
    client->insertMultiple({{"x", Items}});
    client->deleteItems({{1, "x"}});
    client->vacuum();
    EXPECT_THAT(client->getAll(Items), Pair(Items, IsEmpty()));
    EXPECT_THAT(client->getAllFromSession("abc"), IsEmpty());

    client->initialize(directory_.text());
    client->insertMultiple({{"'it''s'", Items}, {"pc", Environments}, {"", Items}, {"x", noTable}});
    client->insertMultiple({"'); DROP TABLE Items; --", ""}, Items);
    EXPECT_THAT(client->getAllItems(),
                ElementsAre(Pair(1, "'it''s'"), Pair(2, "'); DROP TABLE Items; --")));
    EXPECT_THAT(client->getAll(Environments), Pair(Environments, ElementsAre(Pair(1, "pc"))));
    EXPECT_THAT(client->getAll(noTable), Pair(noTable, IsEmpty()));

    std::vector<int> ids{2, -12};
    client->deleteByIds(noTable, ids);
    client->deleteByIds(Items, ids);
    client->insertMultiple({"next"}, Items);
    EXPECT_THAT(client->getAllItems(), ElementsAre(Pair(1, "'it''s'"), Pair(2, "next")));
    client->deleteItems(client->getAllItems());
    client->deleteEnvironments({{1, ""}});
    client->insertMultiple({"first"}, Items);
    client->insertMultiple({"a"}, noTable);
    EXPECT_THAT(client->getAllItems(), ElementsAre(Pair(1, "first")));
  }
  EXPECT_THAT(sending_.getAll(Environments).second, IsEmpty());
  EXPECT_THAT(support_.getAll(Environments).second, ElementsAre(Pair(1, "a")));
}

TEST_F(DatabaseClientsTest, MakeTheDocumentedTables) {
  sending_.initialize(directory_.text());
  support_.initialize(directory_.text());
  const std::string schema = "SELECT sql FROM sqlite_schema WHERE name <> 'sqlite_sequence'";
  const std::string columns = " (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT";
  const std::string timestamp =
      ", timestamp_utc DATETIME NOT NULL DEFAULT(STRFTIME('%Y-%m-%d %H:%M:%S', 'NOW'))";
  for (const auto& [file, end] :
       {std::pair(sendingFile_, std::string(")")), {supportFile_, timestamp + ")"}}) {
    EXPECT_THAT(test::query(file, schema),
                ElementsAre("CREATE TABLE Items" + columns + end,
                            "CREATE TABLE Environments" + columns + end));
  }
}

TEST_F(DatabaseClientsTest, LogAFailedDeletionAndRefuseAnIdOutOfRange) {
  sending_.initialize(directory_.text());
  sending_.insertMultiple({"one"}, Items);
  test::query(sendingFile_,
              "CREATE TRIGGER keep BEFORE DELETE ON Items BEGIN SELECT RAISE(ABORT, 'kept'); END");
  const test::CapturedLog log;
  sending_.deleteItems({{1, "one"}});
  EXPECT_THAT(log.text(), HasSubstr("error qel.log.analytics.details.DatabaseAdapter: Could not "
                                    "delete all entries by id from Items database. Error: kept\n"));
  EXPECT_THAT(test::query(sendingFile_, "SELECT seq FROM sqlite_sequence"), ElementsAre("1"));
  test::query(sendingFile_, "INSERT INTO Items VALUES (2147483648, '')");
  EXPECT_THROW(sending_.getAllItems(), std::out_of_range);
}

TEST_F(DatabaseClientsTest, ReportAnInsertionThatThrows) {
  class Failing : public db::sql::SqlDatabaseAdapter {
   public:
    using SqlDatabaseAdapter::SqlDatabaseAdapter;
    db::sql::Result execute(const std::string& statement) override {
      return statement.starts_with("INSERT") ? throw std::runtime_error("disk on fire")
                                             : SqlDatabaseAdapter::execute(statement);
    }
  };
  const test::AssertionRecorder assertions;
  details::DatabaseAdapter(std::make_shared<Failing>(sendingFile_)).insert("{}", "Items");
  EXPECT_THAT(assertions.lines(), ElementsAre(EndsWith("DatabaseAdapter): disk on fire")));
}

TEST_F(DatabaseClientsTest, RetentionDeletesOldRowsOfBothTables) {
  support_.initialize(directory_.text());
  test::query(supportFile_, "INSERT INTO Environments VALUES(1, 'old', '2010-01-01')");
  test::query(supportFile_,
              "INSERT INTO Items(json, timestamp_utc) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
              "SELECT i + 1 FROM n WHERE i < 12000) SELECT i, datetime('now', "
              "CASE i % 6000 WHEN 1 THEN '-30 minutes' ELSE '-2 hours' END) FROM n");
  SupportDatabaseClient keepingAll(std::chrono::seconds::max());
  keepingAll.initialize(directory_.text());
  SupportDatabaseClient client(std::chrono::hours(1));
  client.initialize(directory_.text());
  EXPECT_TRUE(test::waitUntil([&] {
    return client.getAll(Environments).second.empty() && client.getAllItems().size() == 2;
  }));
  client.insertMultiple({{"next", Items}});
  EXPECT_THAT(client.getAllItems(),
              ElementsAre(Pair(1, "1"), Pair(6001, "6001"), Pair(6002, "next")));
}

TEST_F(DatabaseClientsTest, AnExportCopiesExactlyTheRowsOfTheSession) {
  const std::string ours = R"({"SessionId": "S", "it's": 1})";
  const auto source = std::make_shared<SupportDatabaseClient>(std::nullopt);
  const auto target = std::make_shared<test::MemoryDatabaseClient>();
  SupportDatabaseExporter exporter(source);
  EXPECT_FALSE(exporter.exportLastSessionToSqliteFile("S", target)) << "not yet initialized";
  source->initialize(directory_.text());
  source->insertMultiple({{R"({"SessionId": "ST"})", Items},
                          {ours, Items},
                          {R"({"SessionId":"S"})", Items},
                          {ours + "!", Environments}});
  EXPECT_FALSE(exporter.exportLastSessionToSqliteFile("U", target));
  EXPECT_TRUE(exporter.exportLastSessionToSqliteFile("S", target));
  EXPECT_THAT(target->texts(Items), ElementsAre(ours));
  EXPECT_THAT(target->texts(Environments), ElementsAre(ours + "!"));
  EXPECT_TRUE(exporter.exportLastSessionToSqliteFile("ST", target)) << "without an environment";
}

}  // namespace qel::log::analytics
