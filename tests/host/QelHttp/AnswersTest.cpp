#include <vector>

#include "tests/host/QelHttp/HttpFixture.h"

namespace qel::protocol::https {
namespace {

using test::AnswerAfter;
using test::HttpsTestServer;
using test::Manner;
using test::Protocol;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct Exchange {
  test::Reply reply;
  const char* expected;  ///< the status, or what the message holds
  std::string body = "{}";
  AnswerAfter answerAfter = AnswerAfter::WholeRequest;
};

class AnswersTest : public HttpFixture {
 protected:
  /// What one post over one connection came to, without the name of the server.
  std::string resultOf(const Exchange& exchange) {
    auto options = serverOptions(exchange.reply);
    options.answerAfter = exchange.answerAfter;
    const HttpsTestServer server(options);
    const auto manner = exchange.reply.manner;
    auto settings = settingsFor(server);
    settings.totalTimeout = std::chrono::seconds(manner == Manner::Stalled ? 1 : 20);
    settings.lowSpeedTime = std::chrono::seconds(manner == Manner::Dripped ? 1 : 20);
    settings.largestResponse <<= manner == Manner::Reset ? 10U : 0U;
    setSettings(settings);
    std::string result = post(message(exchange.body));
    EXPECT_EQ(server.requests().size(), 1U) << exchange.expected;
    EXPECT_EQ(server.connections(), 1) << exchange.expected;
    return result.starts_with(failureAt(server))
               ? result.replace(0, failureAt(server).size(), "failed: ")
               : result;
  }
};

TEST_F(AnswersTest, AreReturnedWhenCompleteOrRefusing) {
  const std::vector<Exchange> exchanges = {
      {{302, Manner::Ordinary, {{"Location", "https://elsewhere.example/"}}}, "302"},
      {{399}, "399"},
      {{200, Manner::WithoutLength, {}, "thanks"}, "200"},
      {{400}, "400"},
      {{401, Manner::Ordinary, {{"WWW-Authenticate", "Basic realm=\"q\""}}}, "401"},
      {{413}, "413", megabytes(8), AnswerAfter::Headers},
      {{500, Manner::Truncated, {}, "sorry"}, "500"},
      // More than fits on the way, so that its beginning has been read when the reset comes.
      {{501, Manner::Reset, {}, megabytes(32)}, "501"},
      {{502, Manner::Ordinary, {}, megabytes(2)}, "502"},
      {{503, Manner::Dripped, {}, megabytes(1)}, "503"},
  };
  for (const auto& exchange : exchanges) {
    EXPECT_EQ(resultOf(exchange), exchange.expected);
  }
}

TEST_F(AnswersTest, ThrowWhenIncomplete) {
  const std::vector<Exchange> exchanges = {
      {{200, Manner::Stalled}, "timed out"},
      {{200, Manner::ResetUnanswered}, "reset by peer"},
      {{200, Manner::ResetUnanswered}, "", megabytes(8), AnswerAfter::Headers},
      {{200, Manner::Truncated, {}, "thanks"}, "3 bytes remaining"},
      {{200, Manner::Reset, {}, "thanks"}, "reset by peer"},
      {{200, Manner::Dripped, {}, megabytes(1)}, "too slow"},
      {{200, Manner::Ordinary, {}, megabytes(16)}, "larger than allowed"},
      {{200, Manner::Ordinary, {{"X-Huge", megabytes(1)}}}, "header line"},
      {{100, Manner::WithoutLength}, "Empty reply"},
      {{101, Manner::WithoutLength, {}, "hello"}, "no final answer, only status 101"},
      {{302},
       "answered with status 302 before the whole body was sent",
       megabytes(8),
       AnswerAfter::Headers},
  };
  for (const auto& exchange : exchanges) {
    EXPECT_THAT(resultOf(exchange), AllOf(StartsWith("failed: "), HasSubstr(exchange.expected),
                                          Not(HasSubstr(secret)), Not(HasSubstr("customer"))));
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
      EXPECT_EQ(request.method, "");
      EXPECT_THAT(request.body, Not(HasSubstr("the body")));
    }
  }
}

}  // namespace
}  // namespace qel::protocol::https
