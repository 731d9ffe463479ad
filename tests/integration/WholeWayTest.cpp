#include <gmock/gmock.h>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelHttp/Settings.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/StoredEvent.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::log::analytics {
namespace {

using namespace std::string_literals;
using broadcaster::ActionListenerInterface;
using test::Manner;
using test::Reply;
using test::Request;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using utilities::setExitDeadline;

constexpr const char* serverName = "analytics.qel.example";
const std::string secret = "canary-secret";

void graphicAction(const std::string& name, const std::string& value = "v") {
  broadcaster::ActionBroadcaster::getInstance().notify(
      &ActionListenerInterface::onGraphicAction,
      broadcaster::event::GraphicActionEvent{{name, {{"key", value}}}});
}

/// A client over real databases in a directory of its own, and a server that answers as it is told.
class WholeWayTest : public testing::Test {
 protected:
  WholeWayTest() {
    protocol::https::Settings settings;
    settings.caBundle = certificates_.caFile();
    settings.connectFor = serverName;
    settings.connectTo = server_.address();
    protocol::https::setSettings(settings);
  }

  /// Runs a client from activation to release, with `session` between.
  void run(const std::function<void()>& session) {
    test::FakeWebUpdateReporter webUpdateReporter;
    auto databases =
        std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                       std::make_unique<SupportDatabaseClient>(std::nullopt));
    databases_ = databases.get();
    Client client(std::move(databases));
    client.activate({.webUpdateReporter = webUpdateReporter,
                     .databasePath = directory_.text(),
                     .installationId = "installation",
                     .sessionId = Guid::create(),
                     .serverSecret = secret,
                     .serverUser = "user",
                     .createEnvironmentItem = test::anEnvironment,
                     .isSendingAllowed = [] { return true; },
                     .databaseCallback = [] { return true; }});
    session();
    databases_->join();
  }

  std::vector<std::string> stored(const std::string& file, const std::string& table) {
    std::vector<std::string> texts;
    for (auto& row :
         db::sql::SqlDatabaseAdapter(directory_.path() / file).selectAll(table).result()) {
      // The last report of memory use comes behind the host's join and may be stored or not.
      if (!row.at(1).starts_with(R"({"Category": "MemoryUsage")")) {
        texts.push_back(row.at(1));
      }
    }
    return texts;
  }
  std::vector<std::string> waiting(const std::string& table) {
    return stored("ItemDatabase.db", table);
  }

  test::TemporaryDirectory directory_;
  test::TestCertificates certificates_;
  std::function<Reply(const Request&)> answer_ = [](const Request&) {
    return Reply{.status = 204};
  };
  test::HttpsTestServer server_{
      {.identity = certificates_.issue(serverName),
       .answer = [this](const Request& request) { return answer_(request); }}};
  CipDatabases* databases_ = nullptr;
};

/// The packages that carry these rows of one table, in this order, each closed by the row that
/// reaches a million bytes.
std::vector<std::string> packagesOf(const std::string& list, const std::vector<std::string>& rows) {
  std::vector<std::string> packages;
  std::size_t size = 0;
  std::string joined;
  for (const auto& row : rows) {
    joined += (size == 0 ? "" : ",") + row;
    size += row.size();
    if (size >= 1'000'000 || &row == &rows.back()) {
      packages.push_back(R"({"version": "3.1", ")" + list + R"(": [)" + joined + "]}");
      joined.clear();
      size = 0;
    }
  }
  return packages;
}

TEST_F(WholeWayTest, EverythingBroadcastArrivesByteExactAndLeavesTheSendingDatabase) {
  run([&] {
    for (int i = 0; i < 1500; ++i) {
      graphicAction("zoom " + std::to_string(i), std::string(1000, 'z'));
    }
    graphicAction("hostile", "'; DROP TABLE Items; --\0\x01\"\\\xff\xc3\xa4"s);
    graphicAction("large", std::string(1'000'000, 'x'));
    graphicAction("last");
  });
  EXPECT_THAT(waiting("Items"), IsEmpty());
  EXPECT_THAT(waiting("Environments"), IsEmpty());

  const auto items = stored("SupportDatabase.db", "Items");
  ASSERT_EQ(items.size(), 1503U);
  EXPECT_EQ(test::summaryOf(items[1500]),
            "Graphic|Action|hostile|key='; DROP TABLE Items; --\0\x01\"\\\xef\xbf\xbd\xc3\xa4"s);
  auto expected = packagesOf("environments", stored("SupportDatabase.db", "Environments"));
  ASSERT_THAT(expected,
              ElementsAre(testing::StartsWith(R"({"version": "3.1", "environments": [{)")));
  for (const auto& package : packagesOf("events", items)) {
    expected.push_back(package);
  }
  EXPECT_EQ(expected.size(), 4U);
  std::vector<std::string> received;
  for (const auto& request : server_.requests()) {
    EXPECT_THAT(request.head, testing::StartsWith("POST /authenticated/customer-care.php HTTP/"));
    EXPECT_THAT(request.head,
                testing::HasSubstr("\r\nContent-Type: application/json; charset=utf-8\r\n"));
    received.push_back(request.body);
  }
  EXPECT_TRUE(received == expected);  // megabytes, so without printing them
  EXPECT_EQ(server_.connections(), 1);
}

TEST_F(WholeWayTest, RowsThatWereNotAcceptedStayAndLeaveWithTheNextRun) {
  const Reply bad[] = {{.status = 400},
                       {.status = 401, .headers = "WWW-Authenticate: Basic realm=\"q\"\r\n"},
                       {.status = 413},
                       {.status = 429, .headers = "Retry-After: 1\r\n"},
                       {.status = 500},
                       {.status = 200, .manner = Manner::Truncated, .body = "ok"},
                       {.status = 200, .manner = Manner::ResetUnanswered}};
  std::size_t rows = 0;
  for (const auto& reply : bad) {
    answer_ = [&](const Request&) { return reply; };
    testing::internal::CaptureStderr();
    run([] { graphicAction("kept"); });
    const auto logged = testing::internal::GetCapturedStderr();
    EXPECT_THAT(logged, testing::HasSubstr("qel.log.analytics.Client: sending CIP data has "));
    EXPECT_THAT(logged, testing::Not(testing::HasSubstr(secret)));
    EXPECT_GT(waiting("Items").size(), rows);
    rows = waiting("Items").size();
  }
  EXPECT_THAT(waiting("Environments"), SizeIs(std::size(bad)));
  const test::HttpsTestServer elsewhere({.identity = certificates_.issue("127.0.0.1")});
  answer_ = [&](const Request&) {
    return Reply{.status = 302, .headers = "Location: https://" + elsewhere.address() + "/\r\n"};
  };
  run([] {});
  EXPECT_THAT(waiting("Items"), IsEmpty());
  EXPECT_THAT(waiting("Environments"), IsEmpty());
  EXPECT_EQ(elsewhere.connections(), 0) << "a redirection is an acceptance, and is not followed";
}

}  // namespace
}  // namespace qel::log::analytics
