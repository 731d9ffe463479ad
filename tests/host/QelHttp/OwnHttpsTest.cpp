#include <gmock/gmock.h>

#include "host/QelHttp/Client.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/Patience.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/Tally.h"

namespace qel::protocol::https {

using namespace testing;
using namespace test;

/// The client of `samples/cpp`, and a server that never answers.
TEST(OwnHttpsTest, EndsAtTheStopTimeAndNamesAnUntrustedCertificate) {
  const std::string name = "analytics.qel.example";
  TestCertificates known;
  TestCertificates strangers;
  const HttpsTestServer server({.identity = known.issue(name), .answer = [](const Request&) {
                                  return Reply{.manner = Manner::Stalled};
                                }});
  const auto post = [&](const TestCertificates& trusted) {
    setSettings({.caBundle = trusted.caFile(),
                 .connectTo = server.address(),
                 .connectFor = name,
                 .proxy = {}});
    Client().post({name, "/", "text/plain", "row", {}, {}});
  };
  utilities::Patience::StopTime stopTime(utilities::Patience::neverStop);
  const utilities::Patience patience(utilities::Patience::unlimited, stopTime);
  EXPECT_THAT([&] { post(strangers); },
              Throws<Error>(Property(&Error::cause, Error::Cause::Certificate)));
  std::thread withdrawal([&] {
    server.waitFor(1);
    stopTime = steady_clock::now();
  });
  EXPECT_LT(timeOf([&] { EXPECT_THROW(post(known), Error); }), 5s);
  withdrawal.join();
  const int connections = server.connections();
  EXPECT_THROW(post(known), Error);
  EXPECT_EQ(server.connections(), connections) << "nothing may begin after the stop time";
}

}  // namespace qel::protocol::https
