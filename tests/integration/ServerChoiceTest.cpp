#include "Application/Log/Analytics/ServerConnection/ConnectionCheck.h"
#include "Application/Log/Analytics/ServerConnection/HostName.h"
#include "host/QelUtilities/Exception.h"
#include "tests/support/Logged.h"
#include "tests/support/Pattern.h"
#include "tests/support/Site.h"

namespace qel::test {

using namespace std::string_literals;
using namespace testing;
using serverconnection::ConnectionCheck;
using serverconnection::tryConnection;
using Result = ConnectionCheck::Result;

constexpr const char* staging = "staging.qel.example";

TEST(ServerChoiceTest, OnlyAHostNameIsAccepted) {
  const std::string label(63, 'a');
  const std::string longest = label + '.' + label + '.' + label + '.' + label.substr(2);
  for (const auto& name : {"a"s, "Analytics-2.qel.example"s, "3d.xn--bcher-kva.de"s, longest}) {
    EXPECT_TRUE(serverconnection::isHostName(name)) << name;
  }
  const TemporaryDirectory directory;
  Activation activation{directory.text()};
  Client client(filePair());
  for (const auto& name :
       {"."s, "a."s, ".a"s, "a..b"s, "-a.b"s, "a-.b"s, "a_b.c"s, "a b"s, "a:443"s, "https://a"s,
        "127.0.0.1"s, "2130706433"s, "::1"s, "b\xC3\xBC.de"s, "a\n"s, 'a' + label, 'a' + longest}) {
    activation.parameter.serverHost = name;
    EXPECT_THAT([&] { client.activate(activation.parameter); },
                ThrowsMessage<qel::exception>("serverHost: \"" + name + "\" is not a host name"));
    EXPECT_THROW(tryConnection(activation.parameter), qel::exception);
  }
  EXPECT_FALSE(client.isActive());
  EXPECT_TRUE(std::filesystem::is_empty(directory.path())) << "no database was opened";
}

TEST(ServerChoiceTest, SendsToTheChosenServerAndReportsIt) {
  std::atomic<int> answer{200};
  const Site site({.answer = [&](const Request&) { return Reply{.status = answer}; }}, staging);
  site.store({"1", "23"});
  const CapturedLog log(log::Level::Info);
  Activation activation{site.directory()};
  activation.parameter.serverHost = staging;
  Client client(filePair());
  const auto before = client.sendingStatus();
  EXPECT_TRUE(!before.lastAccepted && !before.lastFailure && !before.isLoopRunning);
  const auto begin = std::chrono::system_clock::now();
  client.activate(activation.parameter);
  EXPECT_TRUE(waitUntil([&] { return client.sendingStatus().rowsAccepted == 2; }));
  EXPECT_GE(client.sendingStatus().lastAccepted, begin);
  EXPECT_TRUE(client.sendingStatus().isLoopRunning);
  EXPECT_THAT(site.server().requests(),
              ElementsAre(Field(&Request::head, HasSubstr("Host: staging.qel.example\r\n"))));
  EXPECT_TRUE(waitUntil([&] { return log.text().find(" ms\n") != std::string::npos; }));
  EXPECT_THAT(log.text(), MatchesPattern(".* info qel.log.analytics.Client: sent 2 rows, 3 bytes "
                                         "in [0-9]+ ms\n"));
  answer = 401;
  site.store({"4"});
  client.stopSendingItems();
  EXPECT_TRUE(waitUntil([&] { return !client.sendingStatus().isLoopRunning; }));
  const auto status = client.sendingStatus();
  EXPECT_EQ(status.rowsAccepted, 2U);
  ASSERT_TRUE(status.lastFailure);
  EXPECT_EQ(status.lastFailure->reason, "the server answered with status 401");
  EXPECT_GE(status.lastFailure->time, *status.lastAccepted);
}

TEST(ServerChoiceTest, ATrialConnectionReportsServerCertificateAndCredentials) {
  const struct {
    Result result;
    int status;
    const char* text;
    ServerOptions server;
    std::string host = staging;
    std::string user = "user";
  } trials[] = {
      {Result::Accepted, 204, "accepted the credentials", answering({.status = 204})},
      {Result::CredentialsRefused, 401, "user or the secret", answering({.status = 401})},
      {Result::Refused, 302, "status 302", answering({.status = 302})},
      {Result::Refused, 503, "status 503", answering({.status = 503})},
      {Result::NotReached, 0, "did not answer in time", stalledServer()},
      {Result::NotReached, 0, "not reached", answering({200, Manner::ResetUnanswered})},
      {Result::NotReached, 0, "holds a colon", {}, staging, "a:b"},
      {Result::CertificateNotTrusted, 0, "certificate is not trusted", {}, "other.qel.example"}};
  for (const auto& trial : trials) {
    SCOPED_TRACE(trial.text);
    const Site site(trial.server, staging);
    auto settings = protocol::https::getSettings();
    settings.connectFor = trial.host;
    settings.connectTimeout = trial.result == Result::NotReached ? 1500ms : 20'000ms;
    protocol::https::setSettings(settings);
    Activation activation;
    activation.parameter.serverHost = trial.host;
    activation.parameter.serverUser = trial.user;
    ConnectionCheck check;
    EXPECT_LT(timeOf([&] { check = tryConnection(activation.parameter); }), 4s);
    EXPECT_EQ(check.result, trial.result);
    EXPECT_EQ(check.status, trial.status);
    EXPECT_THAT(check.text, AllOf(HasSubstr(trial.text), Not(HasSubstr("secret\""))));
    if (check.status != 0) {
      EXPECT_THAT(site.server().requests(),
                  ElementsAre(AllOf(Field(&Request::head, HasSubstr("Authorization: Basic ")),
                                    Field(&Request::body, R"({"version": "3.1"})"))));
    }
  }
}

}  // namespace qel::test
