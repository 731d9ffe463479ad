#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Client/SendingState.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/Logged.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics {

using std::chrono::seconds;
using std::chrono::steady_clock;
using namespace testing;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;

class ClientTest : public testing::Test {
 protected:
  ClientTest() {
    storage_.parameter.isSendingAllowed = [] { return false; };
    client_ = std::make_unique<Client>(std::move(storage_.owned));
  }
  ~ClientTest() override { utilities::debugger::Debugger::setHook({}); }

  test::MemoryStorage storage_;
  std::unique_ptr<Client> client_;
};

TEST_F(ClientTest, RecordsFromItsOnlyActivationToDestruction) {
  EXPECT_THROW(Client(nullptr), std::invalid_argument);
  const auto askForHelp = [](const std::string& topic) {
    broadcaster::ActionBroadcaster::getInstance().notify(
        &broadcaster::ActionListenerInterface::onHelpAction,
        broadcaster::event::HelpActionEvent{{topic, {}}});
  };
  askForHelp("before");
  client_->activate(storage_.parameter);
  EXPECT_THROW(client_->activate(storage_.parameter), qel::exception);
  askForHelp("between");
  EXPECT_THAT(storage_.recorded(), ElementsAre("Help|Action|between|"));
  client_.reset();
  askForHelp("after");
}

TEST_F(ClientTest, RecordsTheMemoryOfProcessAndSystemAfterACrash) {
  client_->activate(storage_.parameter);
  const auto isComplete = AllOf(Contains(StartsWith("MemoryUsage|Application|Crashed|")),
                                Contains(StartsWith("MemoryUsage|Total|Crashed|")));
  EXPECT_TRUE(test::waitUntil([&] {  // There may be no sample yet.
    broadcaster::ApplicationBroadcaster::getInstance().notify(
        &broadcaster::ApplicationListenerInterface::onApplicationCrashed,
        broadcaster::event::ApplicationCrashEvent{{"crash"}, 1});
    return Value(storage_.recorded(), isComplete);
  }));
}

TEST_F(ClientTest, DescribesTheMachineOnceAndOnceMoreWhenSendingStarts) {
  test::Tally reads;
  storage_.sending->beforeRead = [&] { reads.add(); };
  storage_.parameter.createEnvironmentItem = test::anEnvironment;
  client_->activate(storage_.parameter);
  const auto stamped = StartsWith(R"({"InstallationId": "installation", "SessionId": )"
                                  R"("00112233-4455-6677-8899-AABBCCDDEEFF", "Timestamp": ")");
  storage_.databases->join();
  EXPECT_THAT(storage_.support->texts(Environments), ElementsAre(stamped));
  EXPECT_EQ(reads.count(), 0) << "without permission nothing is sent";
  client_->startSendingItems();
  client_->startSendingItems();
  client_->stopSendingItems();
  EXPECT_TRUE(reads.reaches(8)) << "two loops, each with a pass at its start and at its stop";
  storage_.databases->join();
  EXPECT_THAT(storage_.support->texts(Environments), ElementsAre(stamped, stamped));
  client_.reset();
  EXPECT_EQ(reads.count(), 8);
}

TEST_F(ClientTest, ItsReleaseHasHalfAMinute) {
  std::atomic<steady_clock::duration> leftInTheLastPass{};
  storage_.sending->beforeRead = [&] {
    leftInTheLastPass = utilities::exitDeadline() - steady_clock::now();
  };
  storage_.parameter.isSendingAllowed = [] { return true; };
  client_->activate(storage_.parameter);
  client_.reset();
  EXPECT_THAT(leftInTheLastPass.load(), AllOf(Gt(seconds(20)), Le(seconds(30))));
  EXPECT_EQ(utilities::exitDeadline(), steady_clock::time_point::max());
}

TEST_F(ClientTest, AFailedPassIsRecordedAndDoesNotReachTheHost) {
  test::Tally breaks;
  utilities::debugger::Debugger::setHook([&] { breaks.add(); });
  storage_.sending->beforeRead = [] { throw std::out_of_range("no row"); };
  storage_.parameter.isSendingAllowed = [] { return true; };
  const test::CapturedLog log;
  client_->activate(storage_.parameter);
  EXPECT_TRUE(breaks.reaches(2));  // one for the pass, one for the loop that the pass ends
  EXPECT_THAT(storage_.recorded(), ElementsAre("CIP|SendingItems|Exception|Message=no row"));
  EXPECT_EQ(client_->sendingStatus().lastFailure->reason, "no row");
  EXPECT_TRUE(test::waitUntil([&] { return !client_->sendingStatus().isLoopRunning; }));
  EXPECT_THAT(log.text(),
              HasSubstr("error qel.log.analytics.Client: sending CIP data has failed: no row\n"));
}

TEST(SendingPassTest, ARefusedPackageEndsThePassAndKeepsItsRowsAndAllAfterThem) {
  test::MemoryDatabaseClient database;
  test::FakeConnection connection;
  const auto logger = LogManager::instance().getLogger("pass");
  constexpr std::size_t sizeOfTwoRows = 14;
  details::SendingState state;
  details::SendingPass pass(database, connection, *logger, state, sizeOfTwoRows);
  database.insertMultiple({R"({"a":1})", R"({"b":2})", R"({"c":3})"}, Items);
  database.insertMultiple({R"({"e":1})"}, Environments);
  connection.accepted = 1;
  const test::CapturedLog log;
  pass.run();
  EXPECT_THAT(log.text(), HasSubstr("warning pass: sending CIP data has not succeeded. Json sent: "
                                    R"({"version": "3.1", "events": [{"a":1},{"b":2}]})"));
  EXPECT_THAT(connection.packages, SizeIs(2));
  EXPECT_THAT(database.texts(Environments), IsEmpty());
  EXPECT_EQ(database.vacuums, 0);
  connection.accepted = 2;
  connection.failure = [&] {
    const bool isFirst = connection.packages.size() == 3;
    EXPECT_THAT(database.texts(Items), SizeIs(isFirst ? 3 : 2)) << "rows go with their package";
    database.insertMultiple({"late"}, Items);
  };
  pass.run();
  EXPECT_EQ(database.vacuums, 1);
  EXPECT_THAT(database.texts(Items), ElementsAre("late", "late"));
}

}  // namespace qel::log::analytics
