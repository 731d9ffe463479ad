#include <vector>

#include "tests/host/QelHttp/HttpFixture.h"

namespace qel::protocol::https {
namespace {

using test::AnswerAfter;
using test::HttpsTestServer;
using test::Manner;
using test::Protocol;
using test::Reply;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class AnswersTest : public HttpFixture {};

struct Exchange {
  const char* name;
  Reply reply;
  const char* expected;  ///< the status, or what the message ends with
  std::string body = R"({"Version": 1})";
  AnswerAfter answerAfter = AnswerAfter::WholeRequest;
};

TEST_F(AnswersTest, AreReturnedWhenCompleteOrRefusing) {
  const std::vector<Exchange> exchanges = {
      {"accepted", {200}, "200"},
      {"without content", {204}, "204"},
      {"redirected", {302, Manner::Ordinary, {{"Location", "https://elsewhere.example/"}}}, "302"},
      {"the highest accepted status", {399}, "399"},
      {"ended by closing", {200, Manner::WithoutLength, {}, "thanks"}, "200"},
      {"the lowest refused status", {400}, "400"},
      {"unknown user", {401, Manner::Ordinary, {{"WWW-Authenticate", "Basic realm=\"q\""}}}, "401"},
      {"too large", {413}, "413", megabytes(8), AnswerAfter::Headers},
      {"too many", {429}, "429"},
      {"broken", {500}, "500"},
      {"broken and cut", {500, Manner::Truncated, {}, "sorry"}, "500"},
      // More than fits on the way, so that its beginning has been read when the reset comes.
      {"broken and reset", {500, Manner::Reset, {}, megabytes(32)}, "500"},
      {"broken and endless", {500, Manner::Ordinary, {}, megabytes(2)}, "500"},
      {"broken and slow", {500, Manner::Dripped, {}, megabytes(1)}, "500"},
  };
  for (const auto& exchange : exchanges) {
    SCOPED_TRACE(exchange.name);
    auto options = serverOptions(exchange.reply);
    options.answerAfter = exchange.answerAfter;
    const HttpsTestServer server(options);
    auto settings = settingsFor(server);
    const auto manner = exchange.reply.manner;
    settings.totalTimeout = std::chrono::seconds(manner == Manner::Dripped ? 1 : 20);
    settings.largestResponse <<= manner == Manner::Reset ? 10U : 0U;
    setSettings(settings);
    EXPECT_EQ(post(message(exchange.body)), exchange.expected);
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(server.connections(), 1);
  }
}

TEST_F(AnswersTest, ThrowWhenIncomplete) {
  const std::vector<Exchange> exchanges = {
      {"stalled", {200, Manner::Stalled}, "timed out"},
      {"reset", {200, Manner::ResetUnanswered}, "reset by peer"},
      {"reset while uploading",
       {200, Manner::ResetUnanswered},
       "",
       megabytes(8),
       AnswerAfter::Headers},
      {"cut", {200, Manner::Truncated, {}, "thanks"}, "3 bytes remaining"},
      {"cut by a reset", {200, Manner::Reset, {}, "thanks"}, "reset by peer"},
      {"dripped", {200, Manner::Dripped, {}, megabytes(1)}, "too slow"},
      {"huge body", {200, Manner::Ordinary, {}, megabytes(16)}, "larger than allowed"},
      {"huge header", {200, Manner::Ordinary, {{"X-Huge", megabytes(1)}}}, "header line"},
      {"no answer but go on", {100, Manner::WithoutLength}, "Empty reply"},
      {"another protocol",
       {101, Manner::WithoutLength, {}, "hello"},
       "no final answer, only status 101"},
      {"redirected too early",
       {302},
       "answered with status 302 before the whole body was sent",
       megabytes(8),
       AnswerAfter::Headers},
  };
  for (const auto& exchange : exchanges) {
    SCOPED_TRACE(exchange.name);
    auto options = serverOptions(exchange.reply);
    options.answerAfter = exchange.answerAfter;
    const HttpsTestServer server(options);
    auto settings = settingsFor(server);
    const auto manner = exchange.reply.manner;
    settings.totalTimeout = std::chrono::seconds(manner == Manner::Stalled ? 1 : 20);
    settings.lowSpeedTime = std::chrono::seconds(manner == Manner::Dripped ? 1 : 20);
    setSettings(settings);
    EXPECT_THAT(post(message(exchange.body)),
                AllOf(StartsWith(failureAt(server)), HasSubstr(exchange.expected),
                      Not(HasSubstr(secret)), Not(HasSubstr("customer"))));
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(server.connections(), 1);
  }
}

TEST_F(AnswersTest, OfServersThatAreNotTrustedGetNothing) {
  test::TestCertificates strangers;
  struct Server {
    const char* name;
    test::ServerIdentity identity;
    Protocol protocol;
    const char* expected;
  };
  const std::vector<Server> servers = {
      {"unknown authority", strangers.issue(serverName), Protocol::Tls,
       "unable to get local issuer certificate"},
      {"wrong name", certificates_.issue("elsewhere.example"), Protocol::Tls,
       "no alternative certificate subject name matches target host name"},
      {"expired", certificates_.issue(serverName, test::Validity::Expired), Protocol::Tls,
       "certificate has expired"},
      {"old protocol", identity_, Protocol::Tls11Only, "protocol version"},
      {"no TLS", identity_, Protocol::PlainHttp, "wrong version number"},
      {"silent", identity_, Protocol::Silent, "SSL connection timeout"},
  };
  for (const auto& [name, identity, protocol, expected] : servers) {
    SCOPED_TRACE(name);
    auto options = serverOptions();
    options.identity = identity;
    options.protocol = protocol;
    const HttpsTestServer server(options);
    auto settings = settingsFor(server);
    settings.connectTimeout = std::chrono::seconds(protocol == Protocol::Silent ? 1 : 20);
    setSettings(settings);
    EXPECT_THAT(post(message("the body")),
                AllOf(StartsWith(failureAt(server)), HasSubstr(expected), Not(HasSubstr(secret))));
    EXPECT_EQ(server.connections(), 1);
    for (const auto& request : server.requests()) {
      EXPECT_EQ(request.method, "");
      EXPECT_THAT(request.body, Not(HasSubstr("the body")));
    }
  }
}

}  // namespace
}  // namespace qel::protocol::https
