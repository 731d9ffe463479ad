// Checks that the collector can read any request body. Each string that it returns must be part of
// the body, and each row must be a JSON object.

#include <nlohmann/json.hpp>

#include "fuzz/Check.h"
#include "tools/collector/PackageReader.h"

namespace qel::collector {

using fuzz::check;
using nlohmann::json;

void checkRows(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    // The parser treats a NUL as the end of the text and skips a byte order mark at the start.
    check(row.text.starts_with('{') && row.text.find('\0') == std::string_view::npos,
          "a sound row is nothing but a JSON object");
    const auto parsed = json::parse(row.text);
    for (std::size_t column = 0; column < tools::columnMembers.size(); ++column) {
      const auto member = parsed.find(tools::columnMembers[column]);
      const bool isText = member != parsed.end() && member->is_string();
      check(row.columns[column] ? member != parsed.end() : !isText,
            "columns are the members that are texts");
    }
  }
}

/// Compares a body that was read as a package with the result of a JSON parser.
void checkAgainstParser(std::string_view body, std::size_t rowsRead) {
  const auto parsed = json::parse(body, nullptr, /*allow_exceptions=*/false);
  if (parsed.is_discarded() || body.find('\0') != std::string_view::npos) {
    return;
  }
  std::size_t rows = 0;
  for (const auto& [name, value] : parsed.items()) {
    check(value.is_array() ? name == "environments" || name == "events" : name == "version",
          "no member is ignored");
    rows += value.is_array() ? value.size() : 0;
  }
  check(rows == rowsRead, "every row of a package is read");
}

}  // namespace qel::collector

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qel::collector;
  const std::string_view body(reinterpret_cast<const char*>(data), size);
  const Package package = readPackage(body);
  std::size_t bytes = 0;
  std::size_t rows = 0;
  const auto account = [&](const auto& texts) {
    for (const auto& read : texts) {
      check(body.find(read.text) != std::string_view::npos, "every text is part of the body");
      bytes += read.text.size() * read.count;
      rows += read.count;
    }
  };
  account(package.environments);
  account(package.events);
  account(package.refused);
  check(bytes <= body.size(), "no part of the body is read twice");
  checkRows(package.environments);
  checkRows(package.events);
  if (package.refused.size() != 1 || package.refused.front().text != body) {
    checkAgainstParser(body, rows);
  }
  return 0;
}
