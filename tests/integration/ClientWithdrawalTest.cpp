#include <future>

#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Logged.h"
#include "tests/support/Site.h"

namespace qel::test {

using namespace testing;

void broadcastHelp() {
  broadcaster::ActionBroadcaster::getInstance().notify(
      &broadcaster::ActionListenerInterface::onHelpAction,
      broadcaster::event::HelpActionEvent{{"", {}}});
}

/// The server never answers the first of three packages, or accepts it slowly.
TEST(ClientWithdrawalTest, EndsAPassInTheMiddleQuietlyAndForGood) {
  Tally withdrawn;
  Tally breaks;
  utilities::debugger::Debugger::setHook([&] { breaks.add(); });
  const AssertionRecorder assertions;
  const CapturedLog log;
  internal::CaptureStderr();
  const ServerOptions slowServer{.answer = [&](const Request&) {
    withdrawn.reaches(1);
    return Reply{};
  }};
  for (const auto& server : {stalledServer(), slowServer}) {
    const Site site(server);
    site.store(std::vector(3, '{' + std::string(1'000'000, ' ') + '}'));
    auto session = std::make_unique<Session>(site.directory(), 1s);
    Client& client = session->client;
    EXPECT_THROW(Client(filePair()).withdraw(), qel::exception) << "it was never activated";
    EXPECT_TRUE(site.server().waitFor(1));
    session->insert(1);
    auto broadcasts = std::async(std::launch::async, [&] {
      for (int i = 0; i < 100; ++i) {
        broadcastHelp();
        std::this_thread::sleep_for(1ms);
      }
    });
    std::vector<RemovedFile> removed;
    EXPECT_LT(timeOf([&] { removed = client.withdraw(); }), 3s);
    withdrawn.add();
    broadcasts.get();
    EXPECT_THAT(removed, AllOf(SizeIs(Ge(3)), Each(Field(&RemovedFile::error, std::error_code()))));
    EXPECT_THAT(client.withdraw(), IsEmpty());
    EXPECT_EQ(utilities::exitDeadline(), steady_clock::time_point::max());
    client.startSendingItems();
    client.stopSendingItems();
    session->insert(2);
    broadcastHelp();
    session->databases.join();
    EXPECT_FALSE(session->databases.errorOccurred() || client.sendingStatus().isLoopRunning);
    EXPECT_THROW(client.activate(session->activation.parameter), qel::exception);
    EXPECT_TRUE(std::filesystem::is_empty(utilities::pathFromUtf8(site.directory())));
    { const Session next(site.directory()); }
    EXPECT_LT(timeOf([&] { session.reset(); }), 1s);
    EXPECT_THAT(site.server().requests(), SizeIs(1));
    EXPECT_EQ(site.server().connections(), 1);
  }
  EXPECT_EQ(internal::GetCapturedStderr() + log.text(), "");
  EXPECT_THAT(assertions.lines(), IsEmpty());
  EXPECT_EQ(breaks.count(), 0);
  utilities::debugger::Debugger::setHook({});
}

TEST(ClientWithdrawalTest, TriesAgainUntilTheRecordingsAreRemoved) {
  const Site site;
  Session session(site.directory());
  auto second = std::make_unique<SupportDatabaseClient>(std::nullopt);
  second->initialize(site.directory());
  EXPECT_THROW(session.client.withdraw(), qel::exception);
  second.reset();
  EXPECT_THAT(session.client.withdraw(), SizeIs(Ge(3)));
  EXPECT_THAT(session.client.withdraw(), IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(utilities::pathFromUtf8(site.directory())));
}

}  // namespace qel::test
