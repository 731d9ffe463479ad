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

using broadcaster::ActionBroadcaster;
using namespace testing;
using utilities::debugger::Debugger;

void help(const std::string& topic) {
  ActionBroadcaster::getInstance().notify(&broadcaster::ActionListenerInterface::onHelpAction,
                                          broadcaster::event::HelpActionEvent{{topic, {}}});
}

class ClientTest : public testing::Test {
 protected:
  ClientTest() {
    storage_.parameter.isSendingAllowed = [this] { return sendingAllowed_; };
    storage_.parameter.createEnvironmentItem = test::anEnvironment;
    client_ = std::make_unique<Client>(std::move(storage_.owned));
  }
  std::vector<std::string> environments() {
    storage_.databases->join();
    return storage_.support->texts(CipDatabaseClientInterface::Environments);
  }

  test::AssertionRecorder assertions_;
  test::MemoryStorage storage_;
  bool sendingAllowed_ = false;
  std::unique_ptr<Client> client_;
};

TEST_F(ClientTest, RecordsFromItsOnlyActivationToDestruction) {
  EXPECT_THAT([] { const Client client(nullptr); },
              ThrowsMessage<std::invalid_argument>("databases can not be assigned nullptr"));
  Broadcaster<issue::StorageListenerInterface> issues;
  const auto tell = [&](const std::string& topic) {
    help(topic);
    issues.notify(&issue::StorageListenerInterface::issuesRemoveAll);
  };
  client_->registerIssueListStorageListener(issues, nullptr);
  client_->registerIssueListStorageListener(issues, nullptr);  // The first one lapses.
  help("before");
  EXPECT_FALSE(client_->isActive());
  client_->activate(storage_.parameter);
  EXPECT_TRUE(client_->isActive());
  EXPECT_THAT([&] { client_->activate(storage_.parameter); },
              ThrowsMessage<qel::exception>("Customer involvement client is already running."));
  tell("between");
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("Help|Action|between|", "IssueListStorage|Issue|RemovedAll|"));
  client_.reset();
  tell("after");
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(ClientTest, ACrashIsFollowedByTheMemoryOfProcessAndSystem) {
  client_->activate(storage_.parameter);
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  const auto told = ElementsAre("Application|Crashed|crash|Exception Code=1",
                                StartsWith("MemoryUsage|Application|Crashed|"),
                                StartsWith("MemoryUsage|Total|Crashed|"));
  std::vector<std::string> last;
  while (!Matches(told)(last)) {  // There may be no sample yet.
    ASSERT_LT(std::chrono::steady_clock::now(), limit);
    broadcaster::ApplicationBroadcaster::getInstance().notify(
        &broadcaster::ApplicationListenerInterface::onApplicationCrashed,
        broadcaster::event::ApplicationCrashEvent{{"crash"}, 1});
    last = storage_.recorded();
    last.erase(last.begin(), last.end() - std::min<std::ptrdiff_t>(3, std::ssize(last)));
  }
}

TEST_F(ClientTest, WithoutPermissionItDescribesTheMachineOnceAndOnceMoreWhenSendingStarts) {
  client_->activate(storage_.parameter);
  const auto stamped = StartsWith(R"({"InstallationId": "installation", "SessionId": )"
                                  R"("00112233-4455-6677-8899-AABBCCDDEEFF", "Timestamp": ")");
  EXPECT_THAT(environments(), ElementsAre(stamped));
  client_->startSendingItems();
  client_->startSendingItems();
  EXPECT_THAT(environments(), ElementsAre(stamped, stamped));
}

TEST_F(ClientTest, SendsAtTheStartAndOnceMoreAtTheStop) {
  test::Tally reads;
  storage_.parameter.createEnvironmentItem = {};  // so that there is nothing to send
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

TEST_F(ClientTest, ItsReleaseHasHalfAMinuteUnlessTheHostSaysOtherwise) {
  using std::chrono::seconds;
  constexpr auto unarmed = std::chrono::steady_clock::time_point::max();
  for (const auto& [set, expected] : {std::pair(std::optional<seconds>(), seconds(30)),
                                      std::pair(std::optional(seconds(100)), seconds(100))}) {
    test::MemoryStorage storage;
    std::atomic<seconds> atTheLastPass{};
    storage.sending->beforeRead = [&] {
      atTheLastPass =
          std::chrono::round<seconds>(utilities::exitDeadline() - std::chrono::steady_clock::now());
    };
    auto client = std::make_unique<Client>(std::move(storage.owned));
    client->activate(storage.parameter);
    utilities::setExitDeadline(set);
    client.reset();
    EXPECT_THAT(atTheLastPass.load(), AllOf(Gt(expected - seconds(10)), Le(expected)));
    EXPECT_EQ(utilities::exitDeadline() == unarmed, !set);
  }
  utilities::setExitDeadline(std::nullopt);
}

TEST_F(ClientTest, AFailedPassIsReportedAndDoesNotReachTheHost) {
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
  Debugger::setHook({});
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("CIP|SendingItems|Exception|Message=no row",
                          "CIP|SendingItems|Exception|Message=Unknown Exception"));
  EXPECT_THAT(test::endCaptureOfErrors(),
              HasSubstr("error qel.log.analytics.Client: sending CIP data has failed: no row\n"));
}

}  // namespace
}  // namespace qel::log::analytics
