#include <functional>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Items/BaseItem.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/StoredEvent.h"
#include "tests/support/Tally.h"

namespace {

using qel::broadcaster::ActionBroadcaster;
using qel::broadcaster::ActionListenerInterface;
using qel::log::analytics::CipDatabaseClientInterface;
using qel::log::analytics::Client;
using qel::log::analytics::items::EnvironmentItem;
using qel::test::AssertionRecorder;
using qel::test::MemoryStorage;
using qel::test::Tally;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr auto Environments = CipDatabaseClientInterface::Environments;
constexpr auto Items = CipDatabaseClientInterface::Items;

std::unique_ptr<EnvironmentItem> anEnvironment() {
  return std::make_unique<EnvironmentItem>(
      qel::log::analytics::items::details::OsEnvironmentInfo("os", "64", "en", "1", false, "", 96,
                                                             ""),
      qel::log::analytics::items::details::HardwareEnvironmentInfo(),
      std::vector<qel::log::analytics::items::details::QelEnvironmentInfo>(), false);
}

void help(const std::string& topic) {
  ActionBroadcaster::getInstance().notify(&ActionListenerInterface::onHelpAction,
                                          qel::broadcaster::event::HelpActionEvent{{topic, {}}});
}

class ClientTest : public testing::Test {
 protected:
  ClientTest() {
    storage_.parameter.isSendingAllowed = [this] { return sendingAllowed_; };
    storage_.parameter.createEnvironmentItem = anEnvironment;
  }
  ~ClientTest() override { qel::utilities::debugger::Debugger::setHook({}); }

  Client& client() {
    if (!client_) {
      client_ = std::make_unique<Client>(std::move(storage_.owned));
    }
    return *client_;
  }
  /// What the support database holds, since the sending database is emptied by passes.
  std::vector<std::string> recorded() {
    storage_.databases->join();
    return qel::test::summariesOf(storage_.support->texts(Items));
  }

  MemoryStorage storage_;
  bool sendingAllowed_ = false;
  std::unique_ptr<Client> client_;
};

TEST_F(ClientTest, NeedsDatabases) {
  try {
    const Client client(nullptr);
    FAIL() << "was made without databases";
  } catch (const std::invalid_argument& failure) {
    EXPECT_STREQ(failure.what(), "databases can not be assigned nullptr");
  }
}

TEST_F(ClientTest, ActivatesOnceOnly) {
  EXPECT_FALSE(client().isActive());
  client().activate(storage_.parameter);
  EXPECT_TRUE(client().isActive());
  try {
    client().activate(storage_.parameter);
    FAIL() << "was activated twice";
  } catch (const qel::exception& failure) {
    EXPECT_STREQ(failure.what(), "Customer involvement client is already running.");
  }
  help("once");
  EXPECT_THAT(recorded(), ElementsAre("Help|Action|once|"));
  EXPECT_THAT(storage_.sending->calls(), ElementsAre("initialize directory"));
}

TEST_F(ClientTest, RecordsFromActivationToDestruction) {
  AssertionRecorder assertions;
  client();
  help("before");
  client().activate(storage_.parameter);
  help("between");
  EXPECT_THAT(recorded(), ElementsAre("Help|Action|between|"));
  client_.reset();
  help("after");
  EXPECT_THAT(assertions.lines(), IsEmpty());
}

TEST_F(ClientTest, NeverActivatedItTouchesNothing) {
  AssertionRecorder assertions;
  client();
  client_.reset();
  EXPECT_THAT(assertions.lines(), IsEmpty());
}

TEST_F(ClientTest, StampsItemsWithInstallationAndSession) {
  client().activate(storage_.parameter);
  storage_.databases->join();
  EXPECT_THAT(storage_.support->texts(Environments),
              ElementsAre(StartsWith(R"({"InstallationId": "installation", "SessionId": )"
                                     R"("00112233-4455-6677-8899-AABBCCDDEEFF", "Timestamp": ")")));
}

TEST_F(ClientTest, WithoutPermissionItDescribesTheMachineOnceAndDoesNotSend) {
  client().activate(storage_.parameter);
  storage_.databases->join();
  EXPECT_THAT(storage_.support->texts(Environments), SizeIs(1));
  EXPECT_THAT(storage_.sending->calls(), ElementsAre("initialize directory"));
  client().startSendingItems();
  client().startSendingItems();
  storage_.databases->join();
  EXPECT_THAT(storage_.support->texts(Environments), SizeIs(2));
}

TEST_F(ClientTest, AnEnvironmentIsNotRequired) {
  for (const std::function<std::unique_ptr<EnvironmentItem>()>& factory :
       {std::function<std::unique_ptr<EnvironmentItem>()>(),
        std::function<std::unique_ptr<EnvironmentItem>()>([] { return nullptr; })}) {
    MemoryStorage storage;
    storage.parameter.createEnvironmentItem = factory;
    storage.parameter.isSendingAllowed = [] { return false; };
    Client client(std::move(storage.owned));
    client.activate(storage.parameter);
    client.startSendingItems();
    storage.databases->join();
    EXPECT_THAT(storage.support->texts(Environments), IsEmpty());
    EXPECT_FALSE(storage.databases->errorOccurred());
  }
}

TEST_F(ClientTest, WithoutAWayToAskForPermissionActivationThrowsAfterItIsActive) {
  storage_.parameter.isSendingAllowed = {};
  EXPECT_THROW(client().activate(storage_.parameter), std::bad_function_call);
  EXPECT_TRUE(client().isActive());
}

TEST_F(ClientTest, AFailingDatabaseLeavesItInactive) {
  class Unopenable : public qel::test::MemoryDatabaseClient {
   public:
    void initialize(const std::string&) override { throw qel::exception("cannot be opened"); }
  };
  Client client(std::make_unique<qel::log::analytics::CipDatabases>(
      std::make_unique<Unopenable>(), std::make_unique<qel::test::MemoryDatabaseClient>()));
  EXPECT_THROW(client.activate(storage_.parameter), qel::exception);
  EXPECT_FALSE(client.isActive());
}

TEST_F(ClientTest, SendsAtTheStartAndOnceMoreAtTheStop) {
  Tally passes;
  storage_.sending->beforeRead = [&] { passes.add(); };
  sendingAllowed_ = true;
  client().activate(storage_.parameter);
  EXPECT_TRUE(passes.reaches(2));  // each pass reads two tables
  client().stopSendingItems();
  EXPECT_TRUE(passes.reaches(4));
  client().stopSendingItems();
  client_.reset();
  EXPECT_EQ(passes.count(), 4);
}

TEST_F(ClientTest, AFailedPassIsReportedAndDoesNotReachTheHost) {
  const struct {
    std::function<void()> failure;
    std::string message;
    std::string onStandardError;
  } cases[] = {
      {[] { throw std::out_of_range("no row"); }, "no row", "): no row\n"},
      {[] { throw 1; }, "Unknown Exception", ")\n"},
  };
  Tally breaks;
  qel::utilities::debugger::Debugger::setHook([&] { breaks.add(); });
  int expectedBreaks = 0;
  for (const auto& [failure, message, onStandardError] : cases) {
    MemoryStorage storage;
    storage.sending->beforeRead = failure;
    testing::internal::CaptureStderr();
    Client client(std::move(storage.owned));
    client.activate(storage.parameter);
    expectedBreaks += 2;  // one for the pass, one for the loop that the pass ends
    EXPECT_TRUE(breaks.reaches(expectedBreaks));
    storage.databases->join();
    EXPECT_THAT(qel::test::summariesOf(storage.support->texts(Items)),
                ElementsAre("CIP|SendingItems|Exception|Message=" + message));
    const auto errors = testing::internal::GetCapturedStderr();
    EXPECT_THAT(errors, HasSubstr("error qel.log.analytics.Client: sending CIP data has failed: " +
                                  message + "\n"));
    EXPECT_THAT(errors, HasSubstr("Assert in ThreadedLoop("));
    EXPECT_THAT(errors, testing::EndsWith(onStandardError));
  }
}

TEST_F(ClientTest, UnregistersInTheOrderOfRegistration) {
  AssertionRecorder assertions;
  client().activate(storage_.parameter);
  // Each broadcaster, emptied from outside, reports when the client wants to take its listener off.
  ActionBroadcaster::getInstance() = {};
  qel::broadcaster::ApplicationBroadcaster::getInstance() = {};
  qel::broadcaster::GeneralBroadcaster::getInstance() = {};
  client_.reset();
  std::vector<std::string> functions;
  for (const auto& info : assertions.records()) {
    functions.push_back(info.function);
  }
  const std::string start = "qel::Broadcaster<class qel::broadcaster::";
  const std::string end = "ListenerInterface>::unregisterListener";
  EXPECT_THAT(functions, ElementsAre(start + "Action" + end, start + "Application" + end,
                                     start + "General" + end));
}

}  // namespace
