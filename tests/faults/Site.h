#pragma once

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "host/QelHttp/Settings.h"
#include "tests/faults/Session.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/Query.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// The numbered rows of a database file in ascending order. The file must be sound.
inline std::vector<int> numbersIn(const std::filesystem::path& file) {
  EXPECT_THAT(query(file, "PRAGMA integrity_check"), testing::ElementsAre("ok"));
  std::vector<int> numbers;
  for (const auto& text : query(file, "SELECT json FROM Items WHERE json NOT LIKE '{%'")) {
    numbers.push_back(std::stoi(text));
  }
  std::ranges::sort(numbers);
  return numbers;
}

/// The numbers from 0 up to `count`.
inline std::vector<int> numbersBelow(int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

/// Never takes the body of a request, nor answers it.
inline ServerOptions stalledServer() {
  ServerOptions options;
  options.answer = [](const Request&) { return Reply{.manner = Manner::Stalled}; };
  options.answerAfter = AnswerAfter::Headers;
  return options;
}

/// Two database files, and a trusted server, which accepts what it is sent unless told otherwise.
class Site {
 public:
  explicit Site(ServerOptions options = {}) : server_(identified(std::move(options))) {
    protocol::https::Settings settings;
    settings.caBundle = certificates_.caFile();
    settings.connectFor = serverName;
    settings.connectTo = server_.address();
    protocol::https::setSettings(settings);
  }

  std::string directory() const { return directory_.text(); }
  const HttpsTestServer& server() const { return server_; }
  std::vector<int> inSupportDatabase() const {
    return numbersIn(directory_.path() / "SupportDatabase.db");
  }
  std::vector<int> waiting() const { return numbersIn(directory_.path() / "ItemDatabase.db"); }
  std::vector<int> acceptedOrWaiting() const {
    auto numbers = waiting();
    for (const auto& request : server_.requests()) {
      const auto package = nlohmann::json::parse(request.body);
      for (const auto& row : package.value("events", nlohmann::json::array())) {
        if (row.is_number()) {
          numbers.push_back(row.get<int>());
        }
      }
    }
    std::ranges::sort(numbers);
    return numbers;
  }

 private:
  static constexpr const char* serverName = "analytics.qel.example";

  ServerOptions identified(ServerOptions options) {
    options.identity = certificates_.issue(serverName);
    return options;
  }

  const TemporaryDirectory directory_;
  TestCertificates certificates_;
  HttpsTestServer server_;
};

}  // namespace qel::test
