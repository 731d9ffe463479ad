#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Logged.h"
#include "tests/support/Site.h"

namespace qel::test {

using namespace testing;

/// Expects that nothing alarms the host or the customer until the destructor.
class Quiet {
 public:
  Quiet() {
    utilities::debugger::Debugger::setHook([this] { breaks_.add(); });
    internal::CaptureStderr();
  }
  ~Quiet() {
    EXPECT_EQ(internal::GetCapturedStderr(), "");
    utilities::debugger::Debugger::setHook({});
    EXPECT_EQ(breaks_.count(), 0);
    EXPECT_THAT(assertions_.lines(), IsEmpty());
    EXPECT_EQ(log_.text(), "");
  }
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

 private:
  const CapturedLog log_;
  const AssertionRecorder assertions_;
  Tally breaks_;
};

/// The server never answers the first of three packages, or accepts it slowly.
TEST(ClientWithdrawalTest, EndsAPassInTheMiddleQuietlyAndForGood) {
  Tally withdrawn;
  const ServerOptions slowServer{.answer = [&](const Request&) {
    withdrawn.reaches(1);
    return Reply{};
  }};
  for (const auto& server : {stalledServer(), slowServer}) {
    const Site site(server);
    const std::string package = '{' + std::string(1'000'000, ' ') + '}';
    site.store({package, package, package});
    const Quiet quiet;
    auto session = std::make_unique<Session>(site.directory(), 1s);
    EXPECT_THROW(Client(filePair()).withdraw(), qel::exception) << "it was never activated";
    EXPECT_TRUE(site.server().waitFor(1));
    session->insert(1);
    std::vector<RemovedFile> removed;
    EXPECT_LT(timeOf([&] { removed = session->client.withdraw(); }), 3s);
    withdrawn.add();
    EXPECT_THAT(removed, AllOf(SizeIs(Ge(3)), Each(Field(&RemovedFile::error, std::error_code()))));
    EXPECT_THAT(session->client.withdraw(), IsEmpty());
    EXPECT_EQ(utilities::exitDeadline(), steady_clock::time_point::max());
    session->client.startSendingItems();
    session->client.stopSendingItems();
    session->insert(2);
    broadcaster::ActionBroadcaster::getInstance().notify(
        &broadcaster::ActionListenerInterface::onHelpAction,
        broadcaster::event::HelpActionEvent{{"after", {}}});
    session->databases.join();
    EXPECT_FALSE(session->databases.errorOccurred());
    EXPECT_FALSE(session->client.sendingStatus().isLoopRunning);
    EXPECT_THROW(session->client.activate(session->activation.parameter), qel::exception);
    EXPECT_TRUE(std::filesystem::is_empty(utilities::pathFromUtf8(site.directory())));
    { const Session next(site.directory()); }
    EXPECT_LT(timeOf([&] { session.reset(); }), 1s);
    EXPECT_THAT(site.server().requests(), SizeIs(1));
    EXPECT_EQ(site.server().connections(), 1);
  }
}

}  // namespace qel::test
