#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "host/QelLog/LogManager.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/Logged.h"
#include "tests/support/MemoryDatabaseClient.h"

namespace qel::log::analytics {
namespace {

using namespace testing;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;

class SendingPassTest : public testing::Test {
 protected:
  void run() {
    details::SendingPass(database_, connection_, *logger_, 14).run();  // the bytes of two rows
  }

  test::MemoryDatabaseClient database_;
  test::FakeConnection connection_;
  const std::shared_ptr<LoggerInterface> logger_ = LogManager::instance().getLogger("pass");
};

TEST_F(SendingPassTest, ARefusedPackageEndsThePassAndKeepsItsRowsAndAllAfterThem) {
  database_.insertMultiple({R"({"a":1})", R"({"b":2})", R"({"c":3})"}, Items);
  database_.insertMultiple({R"({"e":1})"}, Environments);
  connection_.accepted = 1;
  testing::internal::CaptureStderr();
  run();
  EXPECT_THAT(test::endCaptureOfErrors(),
              HasSubstr("warning pass: sending CIP data has not succeeded. Json sent: "
                        R"({"version": "3.1", "events": [{"a":1},{"b":2}]})"));
  EXPECT_THAT(connection_.packages, SizeIs(2));
  EXPECT_THAT(database_.calls(), ElementsAre("delete 0 4"));
  connection_.accepted = 2;
  run();
  run();
  EXPECT_THAT(connection_.packages, SizeIs(4)) << "no package without rows";
  EXPECT_THAT(database_.calls(),
              ElementsAre("delete 0 4", "delete 1 1,2", "delete 1 3", "vacuum", "vacuum"));
}

TEST_F(SendingPassTest, KeepsRowsThatArriveMeanwhileOrMeetAnException) {
  database_.insertMultiple({"1"}, Items);
  connection_.failure = [this] { database_.insertMultiple({"late"}, Items); };
  run();
  connection_.failure = [] { throw std::runtime_error("no network"); };
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_THAT(database_.texts(Items), ElementsAre("late"));
}

}  // namespace
}  // namespace qel::log::analytics
