#include "tests/host/QelHttp/HttpFixture.h"

namespace qel::protocol::https {
namespace {

using test::AnswerAfter;
using test::HttpsTestServer;
using test::Manner;
using test::Protocol;
using namespace testing;

using AnswersTest = HttpFixture;

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

}  // namespace
}  // namespace qel::protocol::https
