#include <thread>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/Exception.h"
#include "tests/support/StoredEvent.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using qel::db::sql::SqlDatabaseAdapter;
using qel::log::analytics::CipDatabaseClient;
using qel::log::analytics::CipDatabaseClientInterface;
using qel::log::analytics::SupportDatabaseClient;
using qel::test::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;
constexpr auto noTable = static_cast<CipDatabaseClientInterface::Table>(2);
const std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>> mixedBatch = {
    {"one", Items}, {"machine", Environments}, {"", Items}, {"lost", noTable}, {"two", Items}};

class DatabaseClientsTest : public testing::Test {
 protected:
  TemporaryDirectory directory_;
};

TEST_F(DatabaseClientsTest, DoNothingBeforeTheyAreInitialized) {
  CipDatabaseClient sending;
  SupportDatabaseClient support(1s);
  for (CipDatabaseClientInterface* client :
       std::initializer_list<CipDatabaseClientInterface*>{&sending, &support}) {
    std::vector<int> ids{1};
    client->insertMultiple({"x"}, Items);
    client->insertMultiple(mixedBatch);
    client->deleteItems({{1, "x"}});
    client->deleteEnvironments({{1, "x"}});
    client->deleteByIds(Items, ids);
    client->vacuum();
    EXPECT_THAT(client->getAllItems(), IsEmpty());
    EXPECT_THAT(client->getAll(Items), Pair(Items, IsEmpty()));
    EXPECT_THAT(client->getAllFromSession("abc"), IsEmpty());
  }
}

TEST_F(DatabaseClientsTest, KeepTheirTablesApart) {
  CipDatabaseClient sending;
  SupportDatabaseClient support(std::nullopt);
  for (CipDatabaseClientInterface* client :
       std::initializer_list<CipDatabaseClientInterface*>{&sending, &support}) {
    client->initialize(directory_.text());
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
    EXPECT_THAT(client->getAllItems(), ElementsAre(Pair(1, "three")));
    EXPECT_THAT(client->getAll(Environments).second, IsEmpty());
  }
  EXPECT_TRUE(exists(directory_.path() / "ItemDatabase.db"));
  EXPECT_TRUE(exists(directory_.path() / "SupportDatabase.db"));
}

TEST_F(DatabaseClientsTest, TreatUnknownTablesOfSingleTextsEachInItsOwnWay) {
  CipDatabaseClient sending;
  sending.initialize(directory_.text());
  sending.insertMultiple({"a", "", "b"}, noTable);
  EXPECT_THAT(sending.getAllItems(), IsEmpty());
  EXPECT_THAT(sending.getAll(Environments).second, IsEmpty());

  SupportDatabaseClient support(std::nullopt);
  support.initialize(directory_.text());
  support.insertMultiple({"a", "", "b"}, noTable);
  EXPECT_THAT(support.getAll(Environments).second, ElementsAre(Pair(1, "a"), Pair(2, "b")));
}

TEST_F(DatabaseClientsTest, OnlyTheSupportDatabaseKnowsSessions) {
  const std::string ours = R"({"SessionId": "S"})";
  const std::string other = R"({"SessionId": "T"})";
  CipDatabaseClient sending;
  SupportDatabaseClient support(std::nullopt);
  for (CipDatabaseClientInterface* client :
       std::initializer_list<CipDatabaseClientInterface*>{&sending, &support}) {
    client->initialize(directory_.text());
    client->insertMultiple({{other, Items}, {ours, Items}});
  }
  EXPECT_THAT(sending.getAllFromSession("S"), IsEmpty());
  EXPECT_THAT(support.getAllFromSession("S"),
              ElementsAre(Pair(Environments, IsEmpty()), Pair(Items, ElementsAre(Pair(2, ours)))));
  EXPECT_THAT(support.getAllFromSession("U"),
              ElementsAre(Pair(Environments, IsEmpty()), Pair(Items, IsEmpty())));
}

TEST_F(DatabaseClientsTest, SayWhichDirectoryCannotBeOpened) {
  const std::string missing = (directory_.path() / "missing").string();
  try {
    CipDatabaseClient().initialize(missing);
    FAIL() << "opened a database in a missing directory";
  } catch (const qel::exception& failure) {
    EXPECT_THAT(failure.what(), testing::HasSubstr(missing));
  }
}

class SizedClient : public CipDatabaseClient {
 public:
  std::optional<std::uint64_t> getDatabaseFileSize() override { return size; }

  std::optional<std::uint64_t> size;
};

TEST_F(DatabaseClientsTest, SendingDatabaseMarksEachCrossingOfItsLimitOnce) {
  SizedClient client;
  client.initialize(directory_.text());
  const std::string marker = "CIP|Database|CriticalLarge|";
  const struct {
    std::optional<std::uint64_t> size;
    std::vector<std::string> added;
  } steps[] = {
      {30'719'999, {"row"}}, {30'720'000, {marker}}, {40'000'000, {}},
      {std::nullopt, {}},    {0, {"row"}},           {~std::uint64_t{0}, {marker}},
  };
  for (const auto& [size, added] : steps) {
    client.size = size;
    client.insertMultiple({{"row", Items}});
    std::vector<std::string> found;
    for (const auto& [id, text] : client.getAllItems()) {
      found.push_back(text == "row" ? text : qel::test::summaryOf(text));
    }
    EXPECT_EQ(found, added) << size.value_or(1);
    client.deleteItems(client.getAllItems());
  }
}

TEST_F(DatabaseClientsTest, SendingDatabaseTellsItsFilesSize) {
  CipDatabaseClient client;
  client.initialize(directory_.text());
  const auto file = directory_.path() / "ItemDatabase.db";
  EXPECT_EQ(client.getDatabaseFileSize(), file_size(file));
  client.insertMultiple({std::string(1'000'000, 'x')}, Items);
  EXPECT_GT(client.getDatabaseFileSize(), 1'000'000U);
  client.deleteItems(client.getAllItems());
  client.vacuum();
  EXPECT_LT(client.getDatabaseFileSize(), 100'000U);
  remove(file);
  EXPECT_EQ(client.getDatabaseFileSize(), 18446744073709551615U);
}

TEST_F(DatabaseClientsTest, RetentionDeletesOldRowsOfBothTables) {
  {
    SupportDatabaseClient client(std::nullopt);
    client.initialize(directory_.text());
    client.insertMultiple({{"old", Items}, {"old", Environments}, {"new", Items}});
    SqlDatabaseAdapter direct(directory_.path() / "SupportDatabase.db");
    for (const std::string table : {"Items", "Environments"}) {
      EXPECT_TRUE(direct
                      .execute("UPDATE " + table +
                               " SET timestamp_utc = STRFTIME('%Y-%m-%d %H:%M:%S', 'NOW', '-2 "
                               "hours') WHERE json = 'old'")
                      .boSuccess());
    }
    client.initialize(directory_.text());
    EXPECT_THAT(client.getAllItems(), SizeIs(2));
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

}  // namespace
