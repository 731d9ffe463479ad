#include <chrono>
#include <cstdlib>
#include <future>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <netdb.h>

#include "host/QelHttp/Client.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/TestCertificates.h"

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
using test::AnswerAfter;
using test::HttpsTestServer;
using test::Manner;
using test::Protocol;
using namespace testing;
using utilities::setExitDeadline;

constexpr const char* serverName = "analytics.qel.example";
constexpr const char* secret = "canary-4711";

std::string megabytes(std::size_t count) {
  std::string text(count << 20U, 'x');
  return text;
}

/// An authority that is trusted, and servers under the name that messages go to.
class HttpTest : public testing::Test {
 protected:
  ~HttpTest() override { setExitDeadline(std::nullopt); }

  test::ServerOptions serverOptions(test::Reply reply = {}) {
    test::ServerOptions options;
    options.identity = identity_;
    options.answer = [reply = std::move(reply)](const test::Request&) { return reply; };
    return options;
  }

  Settings settingsFor(const HttpsTestServer& server) {
    Settings settings;
    settings.caBundle = certificates_.caFile();
    settings.connectFor = serverName;
    settings.connectTo = server.address();
    return settings;
  }

  static Message message(std::string body = R"({"Version": 1})") {
    return {serverName,
            "/authenticated/customer-care.php",
            "application/json; charset=utf-8",
            std::move(body),
            "customer",
            secret,
            false};
  }

  /// The status as text, or the error's message.
  static std::string post(const Message& message) {
    try {
      return std::to_string(Client().post(message).statusCode);
    } catch (const Error& error) {
      return error.what();
    }
  }

  static std::string failureAt(const HttpsTestServer& server) {
    return std::string("posting to ") + serverName + " at " + server.address() + " failed: ";
  }

  test::TestCertificates certificates_;
  const test::ServerIdentity identity_ = certificates_.issue(serverName);
};

using AnswersTest = HttpTest;

std::string failed(const std::string& reason) { return "posting to .* failed: .*" + reason + ".*"; }

TEST_F(AnswersTest, AreReturnedWhenCompleteOrRefusing) {
  struct Exchange {
    test::Reply reply;
    std::string expected;  ///< the status, or what the message is like
    std::string body = "{}";
    AnswerAfter answerAfter = AnswerAfter::WholeRequest;
  };
  const std::vector<Exchange> exchanges = {
      {{302, Manner::Ordinary, "Location: https://elsewhere.example/\r\n"}, "302"},
      {{399}, "399"},
      {{400, Manner::Truncated, {}, "sorry"}, "400"},
      {{401, Manner::Ordinary, "WWW-Authenticate: Basic realm=\"q\"\r\n"}, "401"},
      {{413}, "413", megabytes(8), AnswerAfter::Headers},
      // More than fits on the way, so that its beginning has been read when the reset comes.
      {{501, Manner::Reset, {}, megabytes(32)}, "501"},
      {{502, Manner::Ordinary, {}, megabytes(2)}, "502"},
      {{503, Manner::Dripped, {}, megabytes(1)}, "503"},
      {{200, Manner::Stalled}, failed("timed out")},
      {{200, Manner::ResetUnanswered}, failed("reset by peer")},
      {{200, Manner::ResetUnanswered}, failed(""), megabytes(8), AnswerAfter::Headers},
      {{200, Manner::Truncated, {}, "thanks"}, failed("3 bytes remaining")},
      {{200, Manner::Reset, {}, "thanks"}, failed("reset by peer")},
      {{200, Manner::Dripped, {}, megabytes(1)}, failed("too slow")},
      {{200, Manner::Ordinary, {}, megabytes(16)}, failed("larger than allowed")},
      {{200, Manner::Ordinary, "X-Huge: " + megabytes(1)}, failed("header line")},
      {{100, Manner::Truncated}, failed("Empty reply")},
      {{101, Manner::Truncated, {}, "hello"}, failed("no final answer, only status 101")},
      {{302},
       failed("answered with status 302 before the whole body was sent"),
       megabytes(8),
       AnswerAfter::Headers},
  };
  for (const auto& [reply, expected, body, answerAfter] : exchanges) {
    auto options = serverOptions(reply);
    options.answerAfter = answerAfter;
    const HttpsTestServer server(options);
    auto settings = settingsFor(server);
    settings.totalTimeout = std::chrono::seconds(reply.manner == Manner::Stalled ? 1 : 20);
    settings.lowSpeedTime = std::chrono::seconds(reply.manner == Manner::Dripped ? 1 : 20);
    settings.largestResponse <<= reply.manner == Manner::Reset ? 10U : 0U;
    setSettings(settings);
    EXPECT_THAT(post(message(body)),
                AllOf(MatchesRegex(expected), Not(HasSubstr(secret)), Not(HasSubstr("customer"))));
    EXPECT_EQ(server.requests().size(), 1U) << expected;
    EXPECT_EQ(server.connections(), 1) << expected;
  }
}

TEST_F(AnswersTest, OfServersThatAreNotTrustedGetNothing) {
  test::TestCertificates strangers;
  struct Server {
    test::ServerIdentity identity;
    Protocol protocol;
    const char* expected;
  };
  const std::vector<Server> servers = {
      {strangers.issue(serverName), Protocol::Tls, "unable to get local issuer certificate"},
      {certificates_.issue("elsewhere.example"), Protocol::Tls,
       "no alternative certificate subject name matches target host name"},
      {certificates_.issue(serverName, test::Validity::Expired), Protocol::Tls,
       "certificate has expired"},
      {identity_, Protocol::Tls11Only, "protocol version"},
      {identity_, Protocol::PlainHttp, "wrong version number"},
      {identity_, Protocol::Silent, "SSL connection timeout"},
  };
  for (const auto& [identity, protocol, expected] : servers) {
    auto options = serverOptions();
    options.identity = identity;
    options.protocol = protocol;
    const HttpsTestServer server(options);
    auto settings = settingsFor(server);
    settings.connectTimeout = std::chrono::seconds(protocol == Protocol::Silent ? 1 : 20);
    setSettings(settings);
    EXPECT_THAT(post(message("the body")),
                AllOf(StartsWith(failureAt(server)), HasSubstr(expected), Not(HasSubstr(secret))));
    EXPECT_EQ(server.connections(), 1) << expected;
    for (const auto& request : server.requests()) {
      EXPECT_EQ(request.head, "");
      EXPECT_THAT(request.body, Not(HasSubstr("the body")));
    }
  }
}

using ClientTest = HttpTest;

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
  for (const auto& [user, password, authorization] : credentials) {
    message.user = user;
    message.secret = password;
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
  for (const auto& each : {message(), last, message()}) {
    EXPECT_EQ(post(each), "200");
  }
  EXPECT_EQ(server.connections(), 2);
  const test::TestCertificates strangers;
  settings.caBundle = strangers.caFile();
  setSettings(settings);
  EXPECT_THAT(post(message()), HasSubstr("unable to get local issuer certificate"));
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
using DeadlineTest = HttpTest;

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
