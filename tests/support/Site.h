#pragma once

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/Session.h"
#include "tests/support/Tally.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

constexpr auto exitDeadline = 500ms;

/// Releases a session under the exit deadline. The time that it took.
inline auto releaseTime(std::unique_ptr<Session> session) {
  utilities::setExitDeadline(exitDeadline);
  const auto time = timeOf([&] { session.reset(); });
  utilities::setExitDeadline(std::nullopt);
  return time;
}

inline ServerOptions answering(const Reply& reply) {
  return {.answer = [=](const Request&) { return reply; }};
}

/// Options of a server that reads no request body and never answers.
inline ServerOptions stalledServer(Protocol protocol = Protocol::Tls) {
  auto options = answering({.manner = Manner::Stalled});
  options.protocol = protocol;
  options.answerAfter = AnswerAfter::Headers;
  return options;
}

/// A directory for databases, and a trusted server that the process sends to.
class Site {
 public:
  explicit Site(ServerOptions options = {}, const std::string& name = "analytics.qel.example")
      : server_(identified(std::move(options), name)) {
    protocol::https::setSettings({.caBundle = certificates_.caFile(),
                                  .connectTo = server_.address(),
                                  .connectFor = name,
                                  .proxy = {}});
  }

  std::string directory() const { return directory_.text(); }
  std::filesystem::path sendingFile() const { return directory_.path() / "ItemDatabase.db"; }
  std::filesystem::path supportFile() const { return directory_.path() / "SupportDatabase.db"; }
  std::string authority() const { return certificates_.caFile(); }
  const HttpsTestServer& server() const { return server_; }

  /// Stores rows for sending as an earlier session.
  void store(const std::vector<std::string>& rows) const {
    CipDatabaseClient earlier;
    earlier.initialize(directory());
    earlier.insertMultiple(rows, earlier.Items);
  }

  /// The numbers of all items that the server received or that are still in the sending database.
  /// An item in both appears twice.
  std::multiset<std::string> acceptedOrWaiting() const {
    auto numbers = textsIn(sendingFile());
    for (const auto& request : server_.requests()) {
      const auto package = nlohmann::json::parse(request.body);
      for (const auto& row : package.value("events", nlohmann::json::array())) {
        if (row.is_number()) {
          numbers.insert(row.dump());
        }
      }
    }
    return numbers;
  }

 private:
  ServerOptions identified(ServerOptions options, const std::string& name) {
    options.identity = certificates_.issue(name);
    return options;
  }

  const TemporaryDirectory directory_;
  TestCertificates certificates_;
  HttpsTestServer server_;
};

}  // namespace qel::test
