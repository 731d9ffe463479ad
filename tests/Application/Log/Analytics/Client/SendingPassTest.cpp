#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/ServerConnection/DbToServerConnectionInterface.h"
#include "host/QelLog/LoggerInterface.h"
#include "tests/support/MemoryDatabaseClient.h"

namespace {

using qel::log::analytics::CipDatabaseClientInterface;
using qel::log::analytics::SendingPass;
using qel::test::MemoryDatabaseClient;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;

/// Notes the packages and accepts as many as it is told to.
class FakeConnection : public qel::log::analytics::serverconnection::DbToServerConnectionInterface {
 public:
  void initalize(const qel::log::analytics::parameters::ActivateParameter&) override {}
  bool send(qel::log::analytics::items::ItemWrapper& package) override {
    packages.push_back(package.toJson());
    if (failure) {
      failure();
    }
    return accepted-- > 0;
  }

  int accepted = 1000;
  std::function<void()> failure;
  std::vector<std::string> packages;
};

class FakeLogger : public qel::log::LoggerInterface {
 public:
  void log(int level, const std::string& message) override {
    lines.push_back(std::to_string(level) + " " + message);
  }

  std::vector<std::string> lines;
};

class SendingPassTest : public testing::Test {
 protected:
  void run(std::size_t limit = 1'000'000) {
    SendingPass(database_, connection_, logger_, limit).run();
  }

  MemoryDatabaseClient database_;
  FakeConnection connection_;
  FakeLogger logger_;
};

TEST_F(SendingPassTest, PostsNothingFromEmptyTablesAndStillVacuums) {
  run();
  EXPECT_THAT(connection_.packages, IsEmpty());
  EXPECT_THAT(database_.calls(), ElementsAre("vacuum"));
}

TEST_F(SendingPassTest, SendsEnvironmentsFirstAndDeletesWhatWasAccepted) {
  database_.insertMultiple({"1", "2"}, Items);
  database_.insertMultiple({"{}"}, Environments);
  run();
  EXPECT_THAT(connection_.packages, ElementsAre(R"({"version": "3.1", "environments": [{}]})",
                                                R"({"version": "3.1", "events": [1,2]})"));
  EXPECT_THAT(database_.calls(), ElementsAre("delete 0 3", "delete 1 1,2", "vacuum"));
  EXPECT_THAT(logger_.lines, IsEmpty());
}

TEST_F(SendingPassTest, ClosesAPackageWithTheRowThatReachesTheLimit) {
  const struct {
    std::vector<std::string> rows;
    std::vector<std::string> deletions;
  } cases[] = {
      {{"55555", "55555", "1"}, {"delete 1 1,2", "delete 1 3"}},
      {{"333", "333", "333", "333", "333"}, {"delete 1 1,2,3,4", "delete 1 5"}},
      {{"55555", "4444"}, {"delete 1 1,2"}},
      {{"fifteen bytes..", "1", "2"}, {"delete 1 1", "delete 1 2,3"}},
      {{"1", "fifteen bytes..", "2"}, {"delete 1 1,2", "delete 1 3"}},
      {{"twenty bytes........", "ten bytes."}, {"delete 1 1", "delete 1 2"}},
      {{"", "", "ten bytes.", ""}, {"delete 1 1,2,3", "delete 1 4"}},
  };
  for (const auto& [rows, deletions] : cases) {
    MemoryDatabaseClient database;
    database.insertMultiple(rows, Items);
    SendingPass(database, connection_, logger_, 10).run();
    auto expected = deletions;
    expected.emplace_back("vacuum");
    EXPECT_EQ(database.calls(), expected);
  }
}

TEST_F(SendingPassTest, ARefusedPackageEndsThePassAndKeepsItsRowsAndAllBehindIt) {
  const struct {
    int accepted;
    std::vector<std::string> calls;
    std::string logged;
  } cases[] = {
      {0, {}, R"({"version": "3.1", "environments": [{"e":1}]})"},
      {1, {"delete 0 1"}, R"({"version": "3.1", "events": [{"a":1},{"b":2}]})"},
      {2, {"delete 0 1", "delete 1 2,3"}, R"({"version": "3.1", "events": [{"c":3}]})"},
  };
  for (const auto& [accepted, calls, logged] : cases) {
    MemoryDatabaseClient database;
    database.insertMultiple({R"({"e":1})"}, Environments);
    database.insertMultiple({R"({"a":1})", R"({"b":2})", R"({"c":3})"}, Items);
    connection_.accepted = accepted;
    logger_.lines.clear();
    SendingPass(database, connection_, logger_, 14).run();
    EXPECT_EQ(database.calls(), calls);
    EXPECT_THAT(logger_.lines,
                ElementsAre("2 sending CIP data has not succeeded. Json sent: " + logged));
  }
}

TEST_F(SendingPassTest, LeavesRowsAloneThatArriveMeanwhile) {
  database_.insertMultiple({"1"}, Items);
  connection_.failure = [this] { database_.insertMultiple({"late"}, Items); };
  run();
  EXPECT_THAT(database_.texts(Items), ElementsAre("late"));
}

TEST_F(SendingPassTest, PassesExceptionsOnAndDeletesNothing) {
  database_.insertMultiple({"1"}, Items);
  connection_.failure = [] { throw std::runtime_error("no network"); };
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_THAT(database_.calls(), IsEmpty());
}

}  // namespace
