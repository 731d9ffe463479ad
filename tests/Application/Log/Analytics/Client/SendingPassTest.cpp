#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "host/QelLog/LoggerInterface.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/MemoryDatabaseClient.h"

namespace qel::log::analytics {
namespace {

using test::MemoryDatabaseClient;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;

class FakeLogger : public LoggerInterface {
 public:
  void log(int level, const std::string& message) override {
    lines.push_back(std::to_string(level) + " " + message);
  }

  std::vector<std::string> lines;
};

class SendingPassTest : public testing::Test {
 protected:
  void run() { SendingPass(database_, connection_, logger_, 1'000'000).run(); }

  MemoryDatabaseClient database_;
  test::FakeConnection connection_;
  FakeLogger logger_;
};

TEST_F(SendingPassTest, SendsEnvironmentsFirstAndDeletesWhatWasAccepted) {
  run();
  EXPECT_THAT(connection_.packages, IsEmpty());
  database_.insertMultiple({"1", "2"}, Items);
  database_.insertMultiple({"{}"}, Environments);
  run();
  EXPECT_THAT(connection_.packages, ElementsAre(R"({"version": "3.1", "environments": [{}]})",
                                                R"({"version": "3.1", "events": [1,2]})"));
  EXPECT_THAT(database_.calls(), ElementsAre("vacuum", "delete 0 3", "delete 1 1,2", "vacuum"));
  EXPECT_THAT(logger_.lines, IsEmpty());
}

TEST_F(SendingPassTest, ClosesAPackageWithTheRowThatReachesTheLimit) {
  using Texts = std::vector<std::string>;
  const std::pair<Texts, Texts> cases[] = {
      {{"55555", "55555", "1"}, {"delete 1 1,2", "delete 1 3", "vacuum"}},
      {{"333", "333", "333", "333", "333"}, {"delete 1 1,2,3,4", "delete 1 5", "vacuum"}},
      {{"55555", "4444"}, {"delete 1 1,2", "vacuum"}},
      {{"1", "fifteen bytes..", "2"}, {"delete 1 1,2", "delete 1 3", "vacuum"}},
      {{"twenty bytes........", "ten bytes."}, {"delete 1 1", "delete 1 2", "vacuum"}},
      {{"", "", "ten bytes.", ""}, {"delete 1 1,2,3", "delete 1 4", "vacuum"}},
  };
  for (const auto& [rows, calls] : cases) {
    MemoryDatabaseClient database;
    database.insertMultiple(rows, Items);
    SendingPass(database, connection_, logger_, 10).run();
    EXPECT_EQ(database.calls(), calls);
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

TEST_F(SendingPassTest, LeavesRowsAloneThatArriveMeanwhileOrMeetAnException) {
  database_.insertMultiple({"1"}, Items);
  connection_.failure = [this] { database_.insertMultiple({"late"}, Items); };
  run();
  connection_.failure = [] { throw std::runtime_error("no network"); };
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_THAT(database_.texts(Items), ElementsAre("late"));
}

}  // namespace
}  // namespace qel::log::analytics
