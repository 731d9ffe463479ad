#pragma once

#include <array>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/tools/Transcript.h"

namespace qel::support {

using test::Outcome;

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

inline std::string environment(const std::string& session, const std::string& time) {
  return R"({"InstallationId": "office 4", "SessionId": ")" + session +
         R"(", "Timestamp": "2026-11-21T)" + time +
         R"(Z", "IsInternal": false, "OS": {"Name": "Debian <12>"}})";
}

/// A directory with what real clients have recorded. They stay open, as in a running program, until
/// `endClients`.
class Recorded : public testing::Test {
 protected:
  using Table = log::analytics::CipDatabaseClientInterface::Table;

  Recorded() {
    setenv("DIR", data_.text().c_str(), 1);
    setenv("OUT", other_.text().c_str(), 1);
    setenv("COLUMNS", "140", 1);
    setenv("SHELL", "/bin/sh", 1);  // for script(1)
    setenv("PATH", (QEL_SUPPORT_DIRECTORY ":" + std::string(getenv("PATH"))).c_str(), 1);
  }

  void recordForSupport(const std::vector<std::string>& texts, Table table = Table::Items) {
    record(*support_, texts, table);
  }
  void recordForSending(const std::vector<std::string>& texts, Table table = Table::Items) {
    record(*sending_, texts, table);
  }
  void endClients() {
    support_.reset();
    sending_.reset();
  }

  std::filesystem::path file(const std::string& name) const { return data_.path() / name; }
  std::filesystem::path elsewhere(const std::string& name) const { return other_.path() / name; }

  /// What a shell's command says, in which $DIR is the directory and $OUT another one. It must
  /// leave the directory as it is.
  Outcome run(const std::string& command) const {
    const auto before = contents();
    auto said = runFreely(command);
    EXPECT_EQ(contents(), before) << command;
    return said;
  }

  Outcome runFreely(const std::string& command) const {
    const auto [output, status, errors] = test::outcomeOf(command);
    return {named(output), status, named(errors)};
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

  void record(log::analytics::CipDatabaseClientInterface& client,
              const std::vector<std::string>& texts, Table table) const {
    client.initialize(data_.text());
    std::vector<std::pair<std::string, Table>> rows;
    for (const auto& text : texts) {
      rows.emplace_back(text, table);
    }
    client.insertMultiple(rows);
  }

  /// With the directories' names in place of their paths.
  std::string named(std::string text) const {
    for (const auto& [path, name] : {std::pair(data_.text(), "$DIR"), {other_.text(), "$OUT"}}) {
      for (auto at = text.find(path); at != std::string::npos; at = text.find(path)) {
        text.replace(at, path.size(), name);
      }
    }
    return text;
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
  std::unique_ptr<log::analytics::SupportDatabaseClient> support_ =
      std::make_unique<log::analytics::SupportDatabaseClient>(std::nullopt);
  std::unique_ptr<log::analytics::CipDatabaseClient> sending_ =
      std::make_unique<log::analytics::CipDatabaseClient>();
};

}  // namespace qel::support
