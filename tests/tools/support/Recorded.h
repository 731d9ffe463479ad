#pragma once

#include <array>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/tools/CommandTest.h"

namespace qel::support {

inline const std::string firstSession = "0A1B2C3D-0000-4000-8000-000000000001";
inline const std::string secondSession = "0A1B2C3D-0000-4000-8000-000000000002";

/// An event as the client stores it; `what` are the texts of its first three members, `details` is
/// JSON.
inline std::string event(const std::string& session, const std::string& time,
                         const std::array<std::string, 3>& what,
                         const std::string& details = "{}") {
  return R"({"Category": ")" + what[0] + R"(", "Subcategory": ")" + what[1] + R"(", "Event": ")" +
         what[2] + R"(", "InstallationId": "office 4", "SessionId": ")" + session +
         R"(", "Timestamp": "2026-11-21T)" + time + R"(Z", "Details": )" + details + "}";
}

inline std::string help(const std::string& session, const std::string& time = "11:00:00.000") {
  return event(session, time, {"Help", "Action", "search"});
}

/// $DIR holds what real clients have recorded. They stay open, as in a running program, until
/// `endClients`.
class Recorded : public test::CommandTest {
 protected:
  using Table = log::analytics::CipDatabaseClientInterface::Table;

  Recorded() {
    setenv("COLUMNS", "140", 1);
    setenv("SHELL", "/bin/sh", 1);  // for script(1)
  }

  void recordEnvironment() {
    record(*support_,
           {R"({"InstallationId": "office 4", "SessionId": ")" + firstSession +
            R"(", "Timestamp": "2026-11-21T09:30:00.000Z", "IsInternal": false,)"
            R"( "OS": {"Name": "Debian <12>"}})"},
           Table::Environments);
  }
  void recordForSupport(const std::vector<std::string>& texts) { record(*support_, texts); }
  void recordForSending(const std::vector<std::string>& texts) { record(*sending_, texts); }
  void endClients() {
    support_.reset();
    sending_.reset();
  }

 private:
  void record(log::analytics::CipDatabaseClientInterface& client,
              const std::vector<std::string>& texts, Table table = Table::Items) const {
    client.initialize(file("").string());
    std::vector<std::pair<std::string, Table>> rows;
    for (const auto& text : texts) {
      rows.emplace_back(text, table);
    }
    client.insertMultiple(rows);
  }

  std::unique_ptr<log::analytics::SupportDatabaseClient> support_ =
      std::make_unique<log::analytics::SupportDatabaseClient>(std::nullopt);
  std::unique_ptr<log::analytics::CipDatabaseClient> sending_ =
      std::make_unique<log::analytics::CipDatabaseClient>();
};

}  // namespace qel::support
