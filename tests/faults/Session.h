#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Query.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// An item that is told from all others by its number.
class Numbered : public json::ToJsonInterface {
 public:
  explicit Numbered(int number) : number_(number) {}
  std::string toJson() const override { return std::to_string(number_); }

 private:
  const int number_;
};

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
inline std::vector<int> numbersUpTo(int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

/// Two database files, and a trusted server that keeps the numbers of the rows that it accepts.
class Site {
 public:
  explicit Site(Manner manner = Manner::Ordinary, Protocol protocol = Protocol::Tls)
      : server_(
            {.identity = certificates_.issue(serverName),
             .answer = [this, manner](const Request& request) { return answer(request, manner); },
             .protocol = protocol,
             .answerAfter =
                 manner == Manner::Stalled ? AnswerAfter::Headers : AnswerAfter::WholeRequest}) {
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
    const std::lock_guard lock(mutex_);
    numbers.insert(numbers.end(), accepted_.begin(), accepted_.end());
    std::ranges::sort(numbers);
    return numbers;
  }

 private:
  static constexpr const char* serverName = "analytics.qel.example";

  Reply answer(const Request& request, Manner manner) {
    if (manner == Manner::Ordinary) {
      const auto package = nlohmann::json::parse(request.body, nullptr, false);
      if (!package.is_object()) {
        ADD_FAILURE() << "no package: " << request.body;
        return {.status = 400};
      }
      const std::lock_guard lock(mutex_);
      for (const auto& row : package.value("events", nlohmann::json::array())) {
        if (row.is_number()) {
          accepted_.push_back(row.get<int>());
        }
      }
    }
    return {.status = 204, .manner = manner};
  }

  const TemporaryDirectory directory_;
  TestCertificates certificates_;
  mutable std::mutex mutex_;
  std::vector<int> accepted_;  ///< guarded by mutex_
  HttpsTestServer server_;
};

/// A client over real databases, active from construction to destruction. What is queued at its end
/// is lost unless `databases` are joined before.
class Session {
 public:
  explicit Session(const std::string& directory,
                   std::optional<std::chrono::seconds> retention = std::nullopt)
      : databases(*new log::analytics::CipDatabases(
            std::make_unique<log::analytics::CipDatabaseClient>(),
            std::make_unique<log::analytics::SupportDatabaseClient>(retention))),
        client(std::unique_ptr<log::analytics::CipDatabases>(&databases)) {
    client.activate({.webUpdateReporter = webUpdateReporter_,
                     .databasePath = directory,
                     .installationId = "installation",
                     .sessionId = Guid::create(),
                     .serverSecret = "secret",
                     .serverUser = "user",
                     .createEnvironmentItem = anEnvironment,
                     .isSendingAllowed = [] { return true; },
                     .databaseCallback = [] { return true; }});
  }

  void insert(std::unique_ptr<json::ToJsonInterface> item) const {
    databases.insert(std::move(item), log::analytics::CipDatabaseClientInterface::Items);
  }

 private:
  FakeWebUpdateReporter webUpdateReporter_;

 public:
  log::analytics::CipDatabases& databases;
  log::analytics::Client client;
};

}  // namespace qel::test
