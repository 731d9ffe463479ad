#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Items/BaseItem.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelBroadcaster/CollisionUserActionBroadcaster.h"
#include "host/QelBroadcaster/CommandBroadcaster.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"
#include "host/QelBroadcaster/ProjectBroadcaster.h"
#include "host/QelBroadcaster/SaveBroadcaster.h"
#include "host/QelIssueUi/UserActionBroadcaster.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "tests/support/AssertionRecorder.h"
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

TEST_F(ClientTest, NeedsDatabasesThatCanBeOpened) {
  EXPECT_THAT([] { const Client client(nullptr); },
              ThrowsMessage<std::invalid_argument>("databases can not be assigned nullptr"));
  class Unopenable : public test::MemoryDatabaseClient {
   public:
    void initialize(const std::string&) override { throw qel::exception("cannot be opened"); }
  };
  Client client(std::make_unique<CipDatabases>(std::make_unique<Unopenable>(),
                                               std::make_unique<test::MemoryDatabaseClient>()));
  EXPECT_THROW(client.activate(storage_.parameter), qel::exception);
  EXPECT_FALSE(client.isActive());
  client_.reset();  // never activated it touches nothing
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(ClientTest, RecordsFromItsOnlyActivationToDestruction) {
  help("before");
  EXPECT_FALSE(client_->isActive());
  client_->activate(storage_.parameter);
  EXPECT_TRUE(client_->isActive());
  EXPECT_THAT([&] { client_->activate(storage_.parameter); },
              ThrowsMessage<qel::exception>("Customer involvement client is already running."));
  help("between");
  EXPECT_THAT(storage_.recorded(), ElementsAre("Help|Action|between|"));
  EXPECT_THAT(storage_.sending->calls(), ElementsAre("initialize directory"));
  client_.reset();
  help("after");
  EXPECT_THAT(assertions_.lines(), IsEmpty());
}

TEST_F(ClientTest, TheListenerOfStoredIssuesLapsesWithTheClientOrWithItsSuccessor) {
  Broadcaster<issue::StorageListenerInterface> broadcaster;
  const auto removeAll = [&] {
    broadcaster.notify(&issue::StorageListenerInterface::issuesRemoveAll);
  };
  client_->registerIssueListStorageListener(broadcaster, nullptr);
  client_->registerIssueListStorageListener(broadcaster, nullptr);
  client_->activate(storage_.parameter);
  removeAll();
  EXPECT_THAT(storage_.recorded(), ElementsAre("IssueListStorage|Issue|RemovedAll|"));
  client_.reset();
  removeAll();
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

TEST_F(ClientTest, NeedsNoEnvironmentButThrowsOnceActiveWithoutAWayToAskForPermission) {
  storage_.parameter.createEnvironmentItem = [] { return nullptr; };
  storage_.parameter.isSendingAllowed = {};
  EXPECT_THROW(client_->activate(storage_.parameter), std::bad_function_call);
  EXPECT_TRUE(client_->isActive());
  EXPECT_FALSE(storage_.databases->errorOccurred());
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

TEST_F(ClientTest, AFailedPassIsReportedAndDoesNotReachTheHost) {
  const std::pair<std::function<void()>, std::string> cases[] = {
      {[] { throw std::out_of_range("no row"); }, "no row"},
      {[] { throw 1; }, "Unknown Exception"},
  };
  for (const auto& [failure, message] : cases) {
    test::Tally breaks;
    Debugger::setHook([&] { breaks.add(); });
    test::MemoryStorage storage;
    storage.sending->beforeRead = failure;
    testing::internal::CaptureStderr();
    Client client(std::move(storage.owned));
    client.activate(storage.parameter);
    EXPECT_TRUE(breaks.reaches(2));  // one for the pass, one for the loop that the pass ends
    Debugger::setHook({});
    EXPECT_THAT(storage.recorded(), ElementsAre("CIP|SendingItems|Exception|Message=" + message));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("error qel.log.analytics.Client: sending CIP data has failed: " +
                          message + "\n"));
  }
}

TEST_F(ClientTest, UnregistersInTheOrderOfRegistration) {
  client_->activate(storage_.parameter);
  // Each broadcaster, emptied from outside, reports when the client wants to take its listener off.
  const auto empty = [](auto&... broadcasters) { ((broadcasters = {}), ...); };
  empty(ActionBroadcaster::getInstance(), broadcaster::ApplicationBroadcaster::getInstance(),
        broadcaster::CommandBroadcaster::getInstance(),
        broadcaster::ProjectBroadcaster::getInstance(),
        issue::ui::UserActionBroadcaster::getInstance(),
        broadcaster::CollisionUserActionBroadcaster::getInstance(),
        broadcaster::SaveBroadcaster::getInstance(),
        broadcaster::GeneralBroadcaster::getInstance());
  client_.reset();
  const auto takenOff = [](const std::string& listener) {
    return StartsWith("qel::Broadcaster<class qel::" + listener +
                      "ListenerInterface>::unregisterListener");
  };
  EXPECT_THAT(assertions_.lines(),
              ElementsAre(takenOff("broadcaster::Action"), takenOff("broadcaster::Application"),
                          takenOff("broadcaster::Command"), takenOff("broadcaster::Project"),
                          takenOff("log::issue::ui::UserAction"),
                          takenOff("broadcaster::CollisionUserAction"),
                          takenOff("broadcaster::Save"), takenOff("broadcaster::General")));
}

}  // namespace
}  // namespace qel::log::analytics
