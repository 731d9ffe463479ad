#include <cstdlib>
#include <future>

#include <netdb.h>

#include "host/QelUtilities/ScopeGuard.h"
#include "tests/host/QelHttp/HttpFixture.h"

namespace {

std::promise<void> lookUpBegan;
std::promise<void> lookUpMayEnd;

}  // namespace

/// In place of the system's: nothing here has to be looked up, and one name takes forever.
extern "C" int getaddrinfo(const char* name, const char*, const addrinfo*, addrinfo**) {
  if (name != nullptr && std::string_view(name) == "slow.example") {
    lookUpBegan.set_value();
    lookUpMayEnd.get_future().wait();
  }
  return EAI_NONAME;
}

namespace qel::protocol::https {
namespace {

using namespace std::string_literals;
using std::chrono::milliseconds;
using test::HttpsTestServer;
using namespace testing;

using ClientTest = HttpFixture;

TEST_F(ClientTest, PostsWhatWasWritten) {
  const std::string body = "\0\r\n\r\n{\"ä\": \"\xff\"}"s + std::string(1'500'000, '\0');
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  auto message = this->message(body);
  message.path = "/a/../b%20c?d=e";
  ASSERT_EQ(post(message), "200");
  const auto request = server.requests().at(0);
  EXPECT_TRUE(request.body == body);
  EXPECT_THAT(request.head,
              AllOf(StartsWith("POST /a/../b%20c?d=e HTTP/"),
                    HasSubstr("\r\nHost: analytics.qel.example\r\n"),
                    HasSubstr("\r\nContent-Type: application/json; charset=utf-8\r\n"),
                    Not(HasSubstr("Expect"))));

  const std::array<std::string, 3> credentials[] = {
      {"customer", "canary-4711", "Basic Y3VzdG9tZXI6Y2FuYXJ5LTQ3MTE="},
      {"m\xc3\xbcller", "a:b", "Basic bcO8bGxlcjphOmI="},
      {"", "canary-4711", "Basic OmNhbmFyeS00NzEx"},
  };
  for (const auto& [user, secret, authorization] : credentials) {
    message.user = user;
    message.secret = secret;
    ASSERT_EQ(post(message), "200");
    EXPECT_THAT(server.requests().back().head,
                HasSubstr("\r\nAuthorization: " + authorization + "\r\n"));
  }
  message.secret = "";
  ASSERT_EQ(post(message), "200");
  EXPECT_THAT(server.requests().back().head, Not(HasSubstr("Authorization")));
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(ClientTest, RefusesFieldsThatCouldChangeTheMeaning) {
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  struct Row {
    std::string Message::*field;
    std::vector<std::string> values;
    const char* expected;
  };
  const std::vector<Row> rows = {
      {&Message::host,
       {"", "a/b", "a@b", "a?b", "a#b", "a:8443", "a b", "a\\b", "a\r", "a\nb", "a\0"s, "[a]"},
       "the host is"},
      {&Message::path, {"", "a", "/a b", "/a\r", "/a\nb", "/a\0"s, "/a#b"}, "the path does not"},
      {&Message::contentType, {"X-b\r", "a\nX-b: c", "a\0"s}, "the content type holds CR, LF or"},
      {&Message::user, {"a\r", "a\n", "a\0"s}, "the user holds CR, LF or NUL"},
      {&Message::user, {"a:b"}, "the user holds a colon"},
      {&Message::secret, {"canary\r", "X-b\n", "canary\0"s}, "the secret holds CR, LF or NUL"},
  };
  for (const auto& [field, values, expected] : rows) {
    for (const auto& value : values) {
      auto message = this->message();
      message.*field = value;
      EXPECT_THAT(post(message), AllOf(StartsWith("not posted: "), HasSubstr(expected),
                                       Not(HasSubstr("canary")), Not(HasSubstr("X-b"))))
          << value;
    }
  }
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(ClientTest, KeepsConnectionsUntilClosedOrSetAnew) {
  const HttpsTestServer server(serverOptions());
  auto settings = settingsFor(server);
  setSettings(settings);
  auto last = message();
  last.closeConnection = true;
  const std::pair<Message, int> posts[] = {{message(), 1}, {last, 1}, {message(), 2}};
  for (const auto& [each, connections] : posts) {
    ASSERT_EQ(post(each), "200");
    EXPECT_EQ(server.connections(), connections);
  }
  settings.caBundle = test::TestCertificates().caFile();
  setSettings(settings);
  EXPECT_THAT(post(message()), HasSubstr("certificate"));
  EXPECT_EQ(server.requests().size(), 3U);
}

TEST_F(ClientTest, GoesThroughNoProxyButTheOneThatIsSet) {
  const HttpsTestServer server(serverOptions());
  auto proxyOptions = serverOptions({403});
  proxyOptions.protocol = test::Protocol::PlainHttp;
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
  EXPECT_THAT(proxy.requests().at(0).head,
              AllOf(StartsWith("CONNECT "), Not(HasSubstr("uthorization"))));
  EXPECT_EQ(server.connections(), 1);
}

/// That a transfer ends wherever it stands, and that the process exits under one, is tested with
/// the whole client.
using DeadlineTest = HttpFixture;

TEST_F(DeadlineTest, DoesNotWaitForANameServer) {
  const ScopeGuard releasing([] { lookUpMayEnd.set_value(); });
  setSettings({});
  auto message = this->message();
  message.host = "slow.example";
  auto posting = std::async(std::launch::async, [&] { return post(message); });
  lookUpBegan.get_future().wait();
  setExitDeadline(milliseconds(50));
  // Far above what an ended transfer needs, far below every other limit.
  EXPECT_EQ(posting.wait_for(std::chrono::seconds(5)), std::future_status::ready);
  EXPECT_EQ(posting.get(), "posting to slow.example failed: the exit deadline has passed");
}

TEST_F(DeadlineTest, LeavesWhatEndsBeforeItAlone) {
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  const std::pair<std::optional<milliseconds>, std::string> cases[] = {
      {milliseconds(60'000), "200"},
      {milliseconds::max(), "200"},
      {milliseconds::min(), failureAt(server) + "the exit deadline has passed"},
      {std::nullopt, "200"},
  };
  for (const auto& [fromNow, expected] : cases) {
    setExitDeadline(fromNow);
    EXPECT_EQ(post(message()), expected);
  }
}

}  // namespace
}  // namespace qel::protocol::https
