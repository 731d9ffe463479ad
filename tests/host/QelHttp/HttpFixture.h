#pragma once

#include <chrono>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "host/QelHttp/Client.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/TestCertificates.h"

namespace qel::protocol::https {

using utilities::setExitDeadline;

constexpr const char* serverName = "analytics.qel.example";
constexpr const char* secret = "canary-4711";

inline std::string megabytes(std::size_t count) {
  std::string text(count << 20U, 'x');
  return text;
}

/// An authority that is trusted, and servers under the name that messages go to.
class HttpFixture : public testing::Test {
 protected:
  ~HttpFixture() override { setExitDeadline(std::nullopt); }

  test::ServerOptions serverOptions(test::Reply reply = {}) {
    test::ServerOptions options;
    options.identity = identity_;
    options.answer = [reply = std::move(reply)](const test::Request&) { return reply; };
    return options;
  }

  Settings settingsFor(const test::HttpsTestServer& server) {
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

  static std::string failureAt(const test::HttpsTestServer& server) {
    return std::string("posting to ") + serverName + " at " + server.address() + " failed: ";
  }

  test::TestCertificates certificates_;
  const test::ServerIdentity identity_ = certificates_.issue(serverName);
};

}  // namespace qel::protocol::https
