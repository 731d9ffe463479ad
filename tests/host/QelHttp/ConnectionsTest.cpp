#include <cstdlib>
#include <thread>
#include <vector>

#include "tests/host/QelHttp/HttpFixture.h"

namespace qel::protocol::https {
namespace {

using test::HttpsTestServer;
using test::Manner;
using test::Protocol;
using testing::AllOf;
using testing::HasSubstr;

class ConnectionsTest : public HttpFixture {};

TEST_F(ConnectionsTest, AreKeptAcrossClientsUntilClosedOrSetAnew) {
  const HttpsTestServer server(serverOptions());
  const auto settings = settingsFor(server);
  setSettings(settings);
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(post(message()), "200");
  }
  EXPECT_EQ(server.connections(), 1);

  auto last = message();
  last.closeConnection = true;
  ASSERT_EQ(post(last), "200");
  EXPECT_EQ(server.connections(), 1);
  ASSERT_EQ(post(message()), "200");
  EXPECT_EQ(server.connections(), 2);

  setSettings(settings);
  ASSERT_EQ(post(message()), "200");
  EXPECT_EQ(server.connections(), 3);

  auto distrusting = settings;
  distrusting.caBundle = test::TestCertificates().caFile();
  setSettings(distrusting);
  EXPECT_THAT(post(message()), HasSubstr("certificate"));
  EXPECT_EQ(server.requests().size(), 8U);
}

TEST_F(ConnectionsTest, AreReplacedWhenTheServerClosedThem) {
  const HttpsTestServer server(serverOptions({200, Manner::ThenClosed}));
  setSettings(settingsFor(server));
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(post(message()), "200");
  }
  EXPECT_EQ(server.connections(), 5);
  EXPECT_EQ(server.requests().size(), 5U);
}

TEST_F(ConnectionsTest, GoThroughNoProxyButTheOneThatIsSet) {
  const HttpsTestServer server(serverOptions());
  auto proxyOptions = serverOptions({403});
  proxyOptions.protocol = Protocol::PlainHttp;
  const HttpsTestServer proxy(proxyOptions);
  for (const char* variable : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
    setenv(variable, ("http://" + proxy.address()).c_str(), 1);
  }
  setenv("no_proxy", "*", 1);

  auto settings = settingsFor(server);
  setSettings(settings);
  EXPECT_EQ(post(message()), "200");
  EXPECT_EQ(proxy.connections(), 0);

  settings.proxy = "http://" + proxy.address();
  setSettings(settings);
  EXPECT_THAT(post(message()), AllOf(HasSubstr("403"), HasSubstr(failureAt(server))));
  ASSERT_EQ(proxy.requests().size(), 1U);
  EXPECT_EQ(proxy.requests()[0].method, "CONNECT");
  EXPECT_EQ(proxy.requests()[0].headers.count("authorization"), 0U);
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(ConnectionsTest, ServeSeveralThreadsWhileSettingsChange) {
  constexpr int threads = 4;
  constexpr int posts = 25;
  const HttpsTestServer server(serverOptions());
  const auto settings = settingsFor(server);
  setSettings(settings);
  std::vector<std::thread> posting;
  posting.reserve(threads);
  for (int i = 0; i < threads; ++i) {
    posting.emplace_back([] {
      for (int j = 0; j < posts; ++j) {
        EXPECT_EQ(post(message()), "200");
      }
    });
  }
  while (server.requests().size() < threads * posts / 2) {
    setSettings(settings);
    setExitDeadline(std::chrono::minutes(1));
    ASSERT_TRUE(server.waitForRequests(server.requests().size() + 1));
  }
  for (auto& thread : posting) {
    thread.join();
  }
  EXPECT_EQ(server.requests().size(), threads * posts);
}

}  // namespace
}  // namespace qel::protocol::https
