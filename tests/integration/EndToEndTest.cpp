#include <atomic>

#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "tests/support/Logged.h"
#include "tests/support/Site.h"

namespace qel::test {

using namespace std::string_literals;
using namespace testing;

void graphicAction(const std::string& name, const std::string& value) {
  broadcaster::ActionBroadcaster::getInstance().notify(
      &broadcaster::ActionListenerInterface::onGraphicAction,
      broadcaster::event::GraphicActionEvent{{name, {{"key", value}}}});
}

/// Environments, then items without the last report of memory use: it comes after the host's join
/// and need not be stored.
std::vector<std::string> rows(const std::filesystem::path& file) {
  return query(file,
               "SELECT json FROM Environments UNION ALL "
               "SELECT json FROM Items WHERE json NOT LIKE '%\"MemoryUsage\"%'");
}

TEST(EndToEndTest, DeliversBroadcastTextsByteExactAndDeletesThemFromTheSendingDatabase) {
  const Site site;
  {
    const Session session(site.directory());
    graphicAction("hostile", "'; DROP TABLE Items; --\0\x01\"\\\xff\xc3\xa4"s);
    graphicAction("large", std::string(1'000'000, 'x'));
    graphicAction("last", "v");
    session.databases.join();
  }
  EXPECT_THAT(rows(site.sendingFile()), IsEmpty());
  const auto stored = rows(site.supportFile());
  ASSERT_EQ(stored.size(), 4U);
  EXPECT_EQ(summaryOf(stored[1]),
            "Graphic|Action|hostile|key='; DROP TABLE Items; --\0\x01\"\\\xef\xbf\xbd\xc3\xa4"s);
  const std::string bodies[] = {
      R"({"version": "3.1", "environments": [)" + stored[0] + "]}",
      R"({"version": "3.1", "events": [)" + stored[1] + "," + stored[2] + "]}",
      R"({"version": "3.1", "events": [)" + stored[3] + "]}"};
  const auto requests = site.server().requests();
  EXPECT_TRUE(std::ranges::equal(requests, bodies, {}, &Request::body)) << "too long to print";
  EXPECT_THAT(requests[0].head,
              AllOf(StartsWith("POST /authenticated/customer-care.php HTTP/"),
                    HasSubstr("\r\nContent-Type: application/json; charset=utf-8\r\n")));
  EXPECT_EQ(site.server().connections(), 1);
}

TEST(EndToEndTest, KeepsRowsThatWereNotAcceptedAndEndsWithinTheExitDeadline) {
  const struct {
    const char* logged;
    ServerOptions server;
    std::vector<std::string> earlierRows = {"1"};  ///< without them, the pass at the stop is first
  } passes[] = {{"the exit deadline has passed", stalledServer(Protocol::PlainHttp)},
                {"the exit deadline has passed",
                 stalledServer(),
                 {"1", '{' + std::string(16'000'000, ' ') + '}'}},
                {"the exit deadline has passed", stalledServer(), {}},
                {"not succeeded", answering({.status = 400})},
                {"not succeeded", answering({.status = 401})},
                {"not succeeded", answering({.status = 500})},
                {"has failed: posting to", answering({200, Manner::Truncated, {}, "ok"})},
                {"reset", answering({200, Manner::ResetUnanswered})}};
  for (const auto& pass : passes) {
    SCOPED_TRACE(pass.logged);
    const Site site(pass.server);
    site.store(pass.earlierRows);
    const CapturedLog log;
    auto session = std::make_unique<Session>(site.directory());
    const int begun = pass.earlierRows.empty() ? 0 : 1;
    EXPECT_TRUE(site.server().waitFor(begun));
    session->insert(2);
    session->databases.join();
    EXPECT_LT(releaseTime(std::move(session)), exitDeadline + 1s);
    EXPECT_THAT(log.text(), AllOf(HasSubstr("qel.log.analytics.Client: sending CIP data has "),
                                  HasSubstr(pass.logged), Not(HasSubstr("secret"))));
    EXPECT_THAT(textsIn(site.sendingFile()), SizeIs(1 + begun));
  }
}

TEST(EndToEndTest, TakesARedirectionForAnAcceptanceAndDoesNotFollowIt) {
  const Site site(answering(
      {.status = 302, .headers = "Location: https://analytics.qel.example/elsewhere\r\n"}));
  site.store({"1"});
  { const Session session(site.directory()); }
  EXPECT_THAT(rows(site.sendingFile()), IsEmpty());
  EXPECT_THAT(site.server().requests(), Each(Field(&Request::head, Not(HasSubstr("elsewhere")))));
}

TEST(EndToEndTest, SendsFromTheConsentOnIfItIsGivenLater) {
  const Site site;
  std::atomic<bool> hasConsented{false};
  Activation activation{site.directory()};
  activation.parameter.isSendingAllowed = [&] { return hasConsented.load(); };
  auto pair = filePair();
  CipDatabases& databases = *pair;
  Client client(std::move(pair));
  client.activate(activation.parameter);
  graphicAction("before", "v");
  databases.join();
  EXPECT_FALSE(client.sendingStatus().isLoopRunning);
  hasConsented = true;
  client.startSendingItems();
  graphicAction("after", "v");
  databases.join();
  client.startSendingItems();
  EXPECT_TRUE(waitUntil([&] { return client.sendingStatus().rowsAccepted >= 2; }));
  std::string received;
  for (const auto& request : site.server().requests()) {
    received += request.body;
  }
  EXPECT_THAT(received, AllOf(HasSubstr("environments"), HasSubstr("\"after\""),
                              Not(HasSubstr("\"before\""))));
}

}  // namespace qel::test
