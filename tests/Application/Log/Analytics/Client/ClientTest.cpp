#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/Client.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Logged.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;
using namespace testing;
using utilities::debugger::Debugger;

constexpr auto Environments = CipDatabaseClientInterface::Environments;

class ClientTest : public testing::Test {
 protected:
  ClientTest() {
    storage_.parameter.isSendingAllowed = [this] { return sendingAllowed_; };
    client_ = std::make_unique<Client>(std::move(storage_.owned));
  }
  ~ClientTest() override { Debugger::setHook({}); }

  test::AssertionRecorder assertions_;
  test::MemoryStorage storage_;
  bool sendingAllowed_ = false;
  std::unique_ptr<Client> client_;
};

TEST_F(ClientTest, RecordsFromItsOnlyActivationToDestruction) {
  EXPECT_THROW(Client(nullptr), std::invalid_argument);
  Broadcaster<issue::StorageListenerInterface> issues;
  const auto askForHelp = [](const std::string& topic) {
    broadcaster::ActionBroadcaster::getInstance().notify(
        &broadcaster::ActionListenerInterface::onHelpAction,
        broadcaster::event::HelpActionEvent{{topic, {}}});
  };
  client_->registerIssueListStorageListener(issues, nullptr);
  client_->registerIssueListStorageListener(issues, nullptr);  // replaces the first one
  askForHelp("before");
  EXPECT_FALSE(client_->isActive());
  client_->activate(storage_.parameter);
  EXPECT_TRUE(client_->isActive());
  EXPECT_THROW(client_->activate(storage_.parameter), qel::exception);
  askForHelp("between");
  issues.notify(&issue::StorageListenerInterface::issuesRemoveAll);
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("Help|Action|between|", "IssueListStorage|Issue|RemovedAll|"));
  client_.reset();
  askForHelp("after");
  issues.notify(&issue::StorageListenerInterface::issuesRemoveAll);
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(ClientTest, RecordsTheMemoryOfProcessAndSystemAfterACrash) {
  client_->activate(storage_.parameter);
  const auto isComplete = AllOf(Contains(StartsWith("MemoryUsage|Application|Crashed|")),
                                Contains(StartsWith("MemoryUsage|Total|Crashed|")));
  const auto limit = steady_clock::now() + seconds(30);
  while (!Value(storage_.recorded(), isComplete)) {  // There may be no sample yet.
    ASSERT_LT(steady_clock::now(), limit);
    broadcaster::ApplicationBroadcaster::getInstance().notify(
        &broadcaster::ApplicationListenerInterface::onApplicationCrashed,
        broadcaster::event::ApplicationCrashEvent{{"crash"}, 1});
  }
}

TEST_F(ClientTest, WithoutPermissionItDescribesTheMachineOnceAndOnceMoreWhenSendingStarts) {
  storage_.parameter.createEnvironmentItem = test::anEnvironment;
  client_->activate(storage_.parameter);
  const auto stamped = StartsWith(R"({"InstallationId": "installation", "SessionId": )"
                                  R"("00112233-4455-6677-8899-AABBCCDDEEFF", "Timestamp": ")");
  storage_.databases->join();
  EXPECT_THAT(storage_.support->texts(Environments), ElementsAre(stamped));
  client_->startSendingItems();
  client_->startSendingItems();
  storage_.databases->join();
  EXPECT_THAT(storage_.support->texts(Environments), ElementsAre(stamped, stamped));
}

TEST_F(ClientTest, SendsAtTheStartAndOnceMoreAtTheStop) {
  test::Tally reads;
  storage_.sending->beforeRead = [&] { reads.add(); };
  sendingAllowed_ = true;
  client_->activate(storage_.parameter);
  EXPECT_TRUE(reads.reaches(2));  // each pass reads two tables
  client_->stopSendingItems();
  EXPECT_TRUE(reads.reaches(4));
  client_->stopSendingItems();
  client_.reset();
  EXPECT_EQ(reads.count(), 4);
}

TEST_F(ClientTest, ItsReleaseHasHalfAMinuteUnlessTheHostSetsALimit) {
  for (const auto& set : {std::optional<seconds>(), std::optional(seconds(100))}) {
    test::MemoryStorage storage;
    std::atomic<steady_clock::duration> atTheLastPass{};
    storage.sending->beforeRead = [&] {
      atTheLastPass = utilities::exitDeadline() - steady_clock::now();
    };
    auto client = std::make_unique<Client>(std::move(storage.owned));
    client->activate(storage.parameter);
    utilities::setExitDeadline(set);
    client.reset();
    const auto limit = set.value_or(seconds(30));
    EXPECT_THAT(atTheLastPass.load(), AllOf(Gt(limit - seconds(10)), Le(limit)));
    EXPECT_EQ(utilities::exitDeadline() == steady_clock::time_point::max(), !set);
  }
  utilities::setExitDeadline(std::nullopt);
}

TEST_F(ClientTest, AFailedPassIsRecordedAndDoesNotReachTheHost) {
  test::Tally breaks;
  Debugger::setHook([&] { breaks.add(); });
  storage_.sending->beforeRead = [] { throw std::out_of_range("no row"); };
  sendingAllowed_ = true;
  testing::internal::CaptureStderr();
  client_->activate(storage_.parameter);
  EXPECT_TRUE(breaks.reaches(2));  // one for the pass, one for the loop that the pass ends
  storage_.sending->beforeRead = [] { throw 1; };
  client_->startSendingItems();
  EXPECT_TRUE(breaks.reaches(4));
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("CIP|SendingItems|Exception|Message=no row",
                          "CIP|SendingItems|Exception|Message=Unknown Exception"));
  EXPECT_THAT(test::endCaptureOfErrors(),
              HasSubstr("error qel.log.analytics.Client: sending CIP data has failed: no row\n"));
}

}  // namespace
}  // namespace qel::log::analytics
