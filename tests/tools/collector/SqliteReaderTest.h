#pragma once

#include <cmath>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gmock/gmock.h>

#include "tests/tools/CommandTest.h"
#include "tests/tools/collector/Uploads.h"
#include "tools/collector/EraseCommand.h"
#include "tools/collector/SqliteExecution.h"
#include "tools/collector/SqliteReader.h"
#include "tools/collector/SqliteStore.h"

namespace qel::collector {

/// Members of a row; NULL if the text is empty.
struct Names {
  std::string session;
  std::string installation;
  std::string time;
};

inline std::string member(const std::string& name, const std::string& value) {
  return value.empty() ? "" : R"(,")" + name + R"(":")" + value + '"';
}

inline std::string textOf(const Names& names, const std::string& more) {
  return R"({"x":0)" + member("SessionId", names.session) +
         member("InstallationId", names.installation) + member("Timestamp", names.time) + more +
         '}';
}

inline std::string event(const Names& names, const std::string& category,
                         const std::string& subcategory, const std::string& name = "",
                         const std::string& details = "") {
  return textOf(names, member("Category", category) + member("Subcategory", subcategory) +
                           member("Event", name) +
                           (details.empty() ? "" : R"(,"Details":{)" + details + '}'));
}

inline std::string environment(const Names& names, const std::string& version) {
  return textOf(names, R"(,"CurrentActiveApplication":{"x":1)" + member("Version", version) + '}');
}

/// Real numbers in thousandths.
inline std::string shown(const Cell& cell) {
  if (const auto* const number = std::get_if<std::int64_t>(&cell)) {
    return std::to_string(*number);
  }
  if (const auto* const real = std::get_if<double>(&cell)) {
    return std::to_string(std::llround(*real * 1000));
  }
  const auto* const text = std::get_if<std::string>(&cell);
  return text == nullptr ? "" : *text;
}

class SqliteReaderTest : public test::CommandTest {
 protected:
  void add(const std::string& body) const { SqliteStore(file_).add(uploadsOf(body), soon()); }

  /// The rows of an answer, the columns of each joined by "|".
  std::vector<std::string> read(std::string_view figure, const Filter& filter = {}) const {
    std::vector<std::string> rows;
    for (const auto& cells : SqliteReader(file_).read(figure, filter, soon()).rows) {
      std::string& row = rows.emplace_back(shown(cells.front()));
      for (std::size_t column = 1; column < cells.size(); ++column) {
        row += '|' + shown(cells[column]);
      }
    }
    return rows;
  }

  void execute(const std::string& sql) const {
    SqliteConnection(file_, SqliteConnection::Missing::Fail).execute(sql);
  }

  static void eraseQuietly(const EraseOptions& options) {
    testing::internal::CaptureStdout();
    erase(options);
    testing::internal::GetCapturedStdout();
  }

  /// Two crashes of version 2 in the same command, one of version 1, and rows of hostile clients.
  void addSample() const {
    const Names a{"{AA-1}", "one", "2026-01-04T23:59:59.999Z"};
    const Names b{"BB", "two", "2026-01-05T00:00:00.000Z"};
    const Names c{"AAC", "one", "2026-01-11T10:00:00.000Z"};
    const Names foreign{"", "", "2026-02-30T00:00:00.000Z"};
    const std::string code = R"("Exception Code":"11")";
    const std::string draw = event(a, "Command", "Started", "Draw");
    add(package(environment(a, "1"),
                draw + ',' + draw + ',' + event(a, "Command", "Cancelled", "Draw") + ',' +
                    event(a, "MemoryUsage", "Application", "Runtime", R"("Max":"2048")")));
    add(withEvents(event(a, "Application", "Crashed", "boom", code) + ',' +
                   event(b, "Command", "Started", "Copy") + ',' +
                   event(b, "Application", "Crashed", "bang", code) + ',' +
                   event(b, "Application", "Stopped") + ',' +
                   event(b, "MemoryUsage", "Application", "Runtime", R"("Max":1536)") + ',' +
                   event(b, "MemoryUsage", "Total", "Runtime", R"("Max":"9999999")")));
    add(withEvents(event(c, "Command", "Started", "Copy") + ',' +
                   event(c, "Application", "Crashed", "boom", code) + ',' +
                   event(foreign, "Application", "Crashed") + ',' +
                   event({"", "", "0001-01-01"}, "é", "") + ",refused"));
    add(package(environment(b, "2") + ',' + environment(c, "2") + ',' +
                    environment({"BB", "two", "2026-01-04"}, "3") + ',' + environment(b, ""),
                ""));
  }

  const std::filesystem::path file_ = file("störe.db");
};

}  // namespace qel::collector
