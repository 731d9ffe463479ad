#include <stdexcept>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "tests/support/MemoryDatabaseClient.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using qel::log::analytics::CipDatabaseClientInterface;
using qel::log::analytics::SupportDatabaseClient;
using qel::log::analytics::SupportDatabaseExporter;
using qel::test::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;
using Session = std::map<CipDatabaseClientInterface::Table, CipDatabaseClientInterface::RowMap>;

std::shared_ptr<SupportDatabaseClient> opened(const TemporaryDirectory& directory) {
  auto client = std::make_shared<SupportDatabaseClient>(std::nullopt);
  client->initialize(directory.text());
  return client;
}

TEST(SupportDatabaseExporterTest, CopiesExactlyTheSessionsRows) {
  const std::string ours = R"({"SessionId": "S", "it's": 1})";
  const std::string machine = R"({"SessionId": "S", "machine": 2})";
  const TemporaryDirectory from;
  const TemporaryDirectory to;
  const auto source = opened(from);
  const auto target = opened(to);
  source->insertMultiple({{R"({"SessionId": "ST"})", Items},
                          {ours, Items},
                          {R"({"SessionId":"S"})", Items},
                          {ours + " ", Items},
                          {machine, Environments}});
  SupportDatabaseExporter exporter(source);
  EXPECT_FALSE(exporter.exportLastSessionToSqliteFile("U", target));
  EXPECT_THAT(target->getAllItems(), IsEmpty());
  EXPECT_TRUE(exporter.exportLastSessionToSqliteFile("S", target));
  EXPECT_THAT(target->getAllItems(), ElementsAre(Pair(1, ours), Pair(2, ours + " ")));
  EXPECT_THAT(target->getAll(Environments).second, ElementsAre(Pair(1, machine)));
  EXPECT_FALSE(SupportDatabaseExporter(std::make_shared<SupportDatabaseClient>(std::nullopt))
                   .exportLastSessionToSqliteFile("S", target));
}

/// A source that has what the test says.
class Source : public qel::test::MemoryDatabaseClient {
 public:
  Session getAllFromSession(std::string) override { return session; }
  Session session;
};

TEST(SupportDatabaseExporterTest, LooksAtTheItemsOnlyWhereThereAreNoEnvironments) {
  const auto source = std::make_shared<Source>();
  const auto target = std::make_shared<qel::test::MemoryDatabaseClient>();
  SupportDatabaseExporter exporter(source);
  const std::pair<Session, std::optional<bool>> cases[] = {
      {{}, false},
      {{{Environments, {}}, {Items, {}}}, false},
      {{{Environments, {}}}, std::nullopt},
      {{{Items, {{1, "i"}}}}, std::nullopt},
      {{{Environments, {{1, "e"}}}}, true},
      {{{Environments, {}}, {Items, {{1, "i"}}}}, true},
  };
  for (const auto& [session, isExported] : cases) {
    source->session = session;
    const auto run = [&] { return exporter.exportLastSessionToSqliteFile("S", target); };
    if (isExported) {
      EXPECT_EQ(run(), isExported);
    } else {
      EXPECT_THAT(run, testing::ThrowsMessage<std::out_of_range>("invalid map<K, T> key"));
      EXPECT_THAT(target->texts(Items), IsEmpty());
    }
  }
  EXPECT_THAT(target->texts(Environments), ElementsAre("e"));
  EXPECT_THAT(target->texts(Items), ElementsAre("i"));
}

}  // namespace
