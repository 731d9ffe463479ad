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

TEST_F(SendingPassTest, ARefusedPackageEndsThePassAndKeepsItsRowsAndAllBehindIt) {
  database_.insertMultiple({R"({"e":1})"}, Environments);
  database_.insertMultiple({R"({"a":1})", R"({"b":2})", R"({"c":3})"}, Items);
  connection_.accepted = 1;
  SendingPass(database_, connection_, logger_, 14).run();  // the bytes of two rows
  EXPECT_THAT(database_.calls(), ElementsAre("delete 0 1"));
  EXPECT_THAT(logger_.lines, ElementsAre("2 sending CIP data has not succeeded. Json sent: "
                                         R"({"version": "3.1", "events": [{"a":1},{"b":2}]})"));
  connection_.accepted = 2;
  SendingPass(database_, connection_, logger_, 14).run();
  EXPECT_THAT(database_.calls(), ElementsAre("delete 0 1", "delete 1 2,3", "delete 1 4", "vacuum"));
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
