#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "tests/faults/Site.h"
#include "tests/support/Logged.h"

namespace qel::test {
namespace {

using namespace std::string_literals;
using namespace testing;

constexpr const char* serverName = "analytics.qel.example";

void graphicAction(const std::string& name, const std::string& value) {
  broadcaster::ActionBroadcaster::getInstance().notify(
      &broadcaster::ActionListenerInterface::onGraphicAction,
      broadcaster::event::GraphicActionEvent{{name, {{"key", value}}}});
}

/// Sessions over databases in a directory, and a server that answers as it is told.
class WholeWayTest : public testing::Test {
 protected:
  WholeWayTest() {
    protocol::https::Settings settings;
    settings.caBundle = certificates_.caFile();
    settings.connectFor = serverName;
    settings.connectTo = server_.address();
    protocol::https::setSettings(settings);
  }

  /// The rows of a table but for the last report of memory use, which comes behind the host's join
  /// and may be stored or not.
  std::vector<std::string> stored(const std::string& file, const std::string& table) const {
    return query(directory_.path() / file, "SELECT json FROM " + table +
                                               " WHERE json NOT LIKE '%\"MemoryUsage\"%'"
                                               " ORDER BY ID");
  }
  std::vector<std::string> waiting(const std::string& table) const {
    return stored("ItemDatabase.db", table);
  }

  TemporaryDirectory directory_;
  TestCertificates certificates_;
  Reply reply_{.status = 204};
  HttpsTestServer server_{{.identity = certificates_.issue(serverName),
                           .answer = [this](const Request&) { return reply_; }}};
};

TEST_F(WholeWayTest, EverythingBroadcastArrivesByteExactAndLeavesTheSendingDatabase) {
  {
    const Session session(directory_.text());
    graphicAction("hostile", "'; DROP TABLE Items; --\0\x01\"\\\xff\xc3\xa4"s);
    graphicAction("large", std::string(1'000'000, 'x'));
    graphicAction("last", "v");
    session.databases.join();
  }
  EXPECT_THAT(waiting("Items"), IsEmpty());
  EXPECT_THAT(waiting("Environments"), IsEmpty());

  const auto items = stored("SupportDatabase.db", "Items");
  const auto environments = stored("SupportDatabase.db", "Environments");
  ASSERT_EQ(items.size(), 3U);
  ASSERT_EQ(environments.size(), 1U);
  EXPECT_EQ(summaryOf(items[0]),
            "Graphic|Action|hostile|key='; DROP TABLE Items; --\0\x01\"\\\xef\xbf\xbd\xc3\xa4"s);
  const std::string packages[] = {
      R"({"version": "3.1", "environments": [)" + environments[0] + "]}",
      R"({"version": "3.1", "events": [)" + items[0] + "," + items[1] + "]}",
      R"({"version": "3.1", "events": [)" + items[2] + "]}"};
  const auto requests = server_.requests();
  ASSERT_EQ(requests.size(), std::size(packages));
  for (std::size_t i = 0; i < requests.size(); ++i) {
    EXPECT_THAT(requests[i].head,
                AllOf(StartsWith("POST /authenticated/customer-care.php HTTP/"),
                      HasSubstr("\r\nContent-Type: application/json; charset=utf-8\r\n")));
    EXPECT_TRUE(requests[i].body == packages[i]) << i;  // a megabyte, so without printing it
  }
  EXPECT_EQ(server_.connections(), 1);
}

TEST_F(WholeWayTest, RowsThatWereNotAcceptedStayAndLeaveWithTheNextRun) {
  const Reply bad[] = {{.status = 413},
                       {.status = 200, .manner = Manner::Truncated, .body = "ok"},
                       {.status = 200, .manner = Manner::ResetUnanswered}};
  for (const auto& reply : bad) {
    reply_ = reply;
    testing::internal::CaptureStderr();
    {
      const Session session(directory_.text());
      graphicAction("kept", "v");
      session.databases.join();
    }
    EXPECT_THAT(endCaptureOfErrors(),
                AllOf(HasSubstr("qel.log.analytics.Client: sending CIP data has "),
                      Not(HasSubstr("secret"))));
  }
  EXPECT_THAT(waiting("Items"), SizeIs(Ge(std::size(bad))));
  EXPECT_THAT(waiting("Environments"), SizeIs(std::size(bad)));
  const HttpsTestServer elsewhere({.identity = certificates_.issue("127.0.0.1")});
  reply_ = {.status = 302, .headers = "Location: https://" + elsewhere.address() + "/\r\n"};
  { const Session session(directory_.text()); }
  EXPECT_THAT(waiting("Items"), IsEmpty());
  EXPECT_THAT(waiting("Environments"), IsEmpty());
  EXPECT_EQ(elsewhere.connections(), 0) << "a redirection is an acceptance, and is not followed";
}

}  // namespace
}  // namespace qel::test
