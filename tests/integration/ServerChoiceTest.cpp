#include "Application/Log/Analytics/ServerConnection/ConnectionCheck.h"
#include "host/QelUtilities/Exception.h"
#include "tests/support/Logged.h"
#include "tests/support/Pattern.h"
#include "tests/support/Site.h"

namespace qel::test {

using namespace testing;
using serverconnection::tryConnection;
using Result = serverconnection::ConnectionCheck::Result;

constexpr const char* staging = "3d-staging.qel.example";

TEST(ServerChoiceTest, RefusesWhatIsNoHostName) {
  const TemporaryDirectory directory;
  Activation activation{directory.text()};
  Client client(filePair());
  const std::string label(63, 'a');
  const std::string longest = label + '.' + label + '.' + label + '.' + label.substr(2);
  for (const std::string& name : std::initializer_list<std::string>{
           ".", "a.", ".a", "a..b", "-a.b", "a-.b", "a_b.c", "a b", "a:443", "https://a",
           "10.0.0.1", "2130706433", "::1", "b\xC3\xBC.de", "a\n", 'a' + label, 'a' + longest}) {
    activation.parameter.serverHost = name;
    EXPECT_THAT([&] { client.activate(activation.parameter); },
                ThrowsMessage<qel::exception>("serverHost: \"" + name + "\" is not a host name"));
  }
  EXPECT_FALSE(client.isActive());
  EXPECT_TRUE(std::filesystem::is_empty(directory.path())) << "no database was opened";
  activation.parameter.serverHost = longest;
  activation.parameter.isSendingAllowed = [] { return false; };
  EXPECT_NO_THROW(client.activate(activation.parameter));
}

TEST(ServerChoiceTest, SendsToTheChosenServerAndReportsIt) {
  std::atomic<int> answer{200};
  const Site site({.answer = [&](const Request&) { return Reply{.status = answer}; }}, staging);
  site.store({"1", "23"});
  const CapturedLog log(log::Level::Info);
  Activation activation{site.directory()};
  activation.parameter.serverHost = staging;
  Client client(filePair());
  auto status = client.sendingStatus();
  EXPECT_TRUE(!status.lastAccepted && !status.lastFailure && !status.isLoopRunning);
  const auto begin = std::chrono::system_clock::now();
  client.activate(activation.parameter);
  EXPECT_TRUE(waitUntil([&] { return log.text().find(" ms\n") != std::string::npos; }));
  EXPECT_THAT(log.text(), MatchesPattern(".* info qel.log.analytics.Client: sent 2 rows, 3 bytes "
                                         "in [0-9]+ ms\n"));
  status = client.sendingStatus();
  EXPECT_TRUE(status.lastAccepted >= begin && status.rowsAccepted == 2 && status.isLoopRunning);
  EXPECT_THAT(site.server().requests()[0].head, HasSubstr(staging));
  answer = 401;
  site.store({"4"});
  client.stopSendingItems();
  EXPECT_TRUE(waitUntil([&] { return !client.sendingStatus().isLoopRunning; }));
  status = client.sendingStatus();
  EXPECT_EQ(status.lastFailure.value().reason, "the server answered with status 401");
  EXPECT_TRUE(status.lastFailure->time >= status.lastAccepted && status.rowsAccepted == 2);
}

TEST(ServerChoiceTest, ATrialConnectionReportsServerCertificateAndCredentials) {
  const struct {
    Result result;
    const char* text;
    ServerOptions server;
    std::string host = staging;
    std::string user = "user";
  } trials[] = {
      {Result::Accepted, "accepted the credentials", answering({.status = 204})},
      {Result::CredentialsRefused, "user or the secret (status 401)", answering({.status = 401})},
      {Result::Refused, "status 302", answering({.status = 302})},
      {Result::Refused, "status 503", answering({.status = 503})},
      {Result::NotReached, "did not answer in time", stalledServer()},
      {Result::NotReached, "There was no answer", answering({200, Manner::ResetUnanswered})},
      {Result::NotReached, "holds a colon", {}, staging, "a:b"},
      {Result::CertificateNotTrusted, "certificate is not trusted", {}, "other.qel.example"}};
  for (const auto& [result, text, server, host, user] : trials) {
    const Site site(server, staging);
    auto settings = protocol::https::getSettings();
    settings.connectFor = host;
    settings.connectTimeout = server.answerAfter == AnswerAfter::Headers ? 1500ms : 20'000ms;
    protocol::https::setSettings(settings);
    Activation activation;
    activation.parameter.serverHost = host;
    activation.parameter.serverUser = user;
    const auto check = tryConnection(activation.parameter);
    EXPECT_EQ(check.result, result) << text;
    EXPECT_THAT(check.text, HasSubstr(text));
    if (check.status != 0) {
      EXPECT_THAT(site.server().requests(),
                  ElementsAre(AllOf(Field(&Request::head, HasSubstr("Authorization: Basic ")),
                                    Field(&Request::body, R"({"version": "3.1"})"))));
    }
  }
}

}  // namespace qel::test
