#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/support/Process.h"

namespace qel::support {

inline const std::string firstSession = "0A1B2C3D-0000-4000-8000-000000000001";
inline const std::string secondSession = "0A1B2C3D-0000-4000-8000-000000000002";

/// An event as the client stores it; `what` is "Category|Subcategory|Event", `details` JSON.
inline std::string event(const std::string& session, const std::string& time,
                         const std::string& what, const std::string& details = "{}") {
  const auto first = what.find('|');
  const auto second = what.find('|', first + 1);
  return R"({"Category": ")" + what.substr(0, first) + R"(", "Subcategory": ")" +
         what.substr(first + 1, second - first - 1) + R"(", "Event": ")" + what.substr(second + 1) +
         R"(", "InstallationId": "office 4", "SessionId": ")" + session +
         R"(", "Timestamp": "2026-11-21T)" + time + R"(Z", "Details": )" + details + "}";
}

inline std::string environment(const std::string& session, const std::string& time) {
  return R"({"InstallationId": "office 4", "SessionId": ")" + session +
         R"(", "Timestamp": "2026-11-21T)" + time +
         R"(Z", "IsInternal": false, "OS": {"Name": "Debian <12>"}})";
}

struct Outcome {
  std::string output;
  int status;
  std::string errors;
};

/// A directory with what real clients have recorded. They stay open, as in a running program, until
/// `endClients`.
class Recorded : public testing::Test {
 protected:
  using Table = log::analytics::CipDatabaseClientInterface::Table;
  using Rows = std::vector<std::pair<std::string, Table>>;

  void recordForSupport(const Rows& rows) { record(support_, rows); }
  void recordForSending(const Rows& rows) { record(sending_, rows); }
  void endClients() {
    support_.reset();
    sending_.reset();
  }

  static Rows items(const std::vector<std::string>& texts) {
    Rows rows;
    for (const auto& text : texts) {
      rows.emplace_back(text, Table::Items);
    }
    return rows;
  }

  std::string place() const { return data_.text(); }
  std::filesystem::path file(const std::string& name) const { return data_.path() / name; }
  std::filesystem::path elsewhere(const std::string& name) const { return other_.path() / name; }

  /// What the program says, run by `prefix` if there is one. It must leave the directory as it is.
  Outcome run(const std::string& arguments, const std::string& prefix = "") const {
    const auto before = contents();
    auto said = runFreely(arguments, prefix);
    EXPECT_EQ(contents(), before) << arguments;
    return said;
  }

  static Outcome runFreely(const std::string& arguments, const std::string& prefix = "") {
    test::Process program(prefix + ' ' + QEL_SUPPORT + ' ' + arguments);
    return {program.readUntil(EOF), program.join(), program.errors()};
  }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& [name, content] : contents()) {
      names.push_back(name);
    }
    return names;
  }

 private:
  using Content = std::pair<std::string, std::filesystem::file_time_type>;

  template <typename Client>
  void record(std::shared_ptr<Client>& client, const Rows& rows) {
    if (!client) {
      if constexpr (std::is_same_v<Client, log::analytics::SupportDatabaseClient>) {
        client = std::make_shared<Client>(std::nullopt);
      } else {
        client = std::make_shared<Client>();
      }
      client->initialize(place());
    }
    client->insertMultiple(rows);
  }

  std::map<std::string, Content> contents() const {
    std::map<std::string, Content> contents;
    for (const auto& entry : std::filesystem::directory_iterator(data_.path())) {
      contents[entry.path().filename()] = {test::contentOf(entry.path()), entry.last_write_time()};
    }
    return contents;
  }

  const test::TemporaryDirectory data_;
  const test::TemporaryDirectory other_;
  std::shared_ptr<log::analytics::SupportDatabaseClient> support_;
  std::shared_ptr<log::analytics::CipDatabaseClient> sending_;
};

}  // namespace qel::support
