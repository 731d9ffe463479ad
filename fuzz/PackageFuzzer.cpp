// Checks that a sending pass packs all stored rows, byte for byte, into packages of the specified
// size. The collector must find every row that is a JSON object.

#include <fuzzer/FuzzedDataProvider.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Client/SendingState.h"
#include "fuzz/Check.h"
#include "host/QelLog/LoggerInterface.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/MemoryDatabaseClient.h"
#include "tools/collector/PackageReader.h"
#include "tools/collector/PackageSplitter.h"

namespace qel::log::analytics {

using fuzz::check;
using Table = CipDatabaseClientInterface::Table;
using Texts = std::vector<std::string>;

class SilentLogger : public LoggerInterface {
 public:
  void log(int /*level*/, const std::string& /*message*/) override {}
};

/// Splits the rows into packages. The row that reaches the limit is the last of its package.
std::vector<Texts> batchesOf(const Texts& rows, std::size_t limit) {
  std::vector<Texts> batches;
  std::size_t size = limit;
  for (const auto& row : rows) {
    if (size >= limit) {
      batches.emplace_back();
      size = 0;
    }
    batches.back().push_back(row);
    size += row.size();
  }
  return batches;
}

std::string packageOf(const Texts& rows, const std::string& list) {
  std::string joined;
  for (const auto& row : rows) {
    joined += (&row == &rows.front() ? "" : ",") + row;
  }
  return R"({"version": "3.1", ")" + list + "\": [" + joined + "]}";
}

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// Unlike the parser, this function rejects a NUL in the text and a byte order mark at the start.
bool isJsonObject(const std::string& text) {
  return withoutBlanks(text).starts_with('{') && text.find('\0') == std::string::npos &&
         nlohmann::json::accept(text);
}

/// True if all brackets and strings that open in the row also close in it. Otherwise the row may
/// extend into the next row, and the collector may split the two rows differently.
bool standsAlone(const std::string& row) {
  const auto body = packageOf({row}, "events");
  const auto split = collector::splitPackage(body, 1);
  if (!split || split->lists.size() != 1) {
    return false;
  }
  const auto found = split->lists[0].empty() ? "" : split->lists[0][0];
  return found == withoutBlanks(row);
}

void checkCollected(const std::string& body, const Texts& rows) {
  if (!std::all_of(rows.begin(), rows.end(), standsAlone)) {
    return;
  }
  const auto package = collector::readPackage(body);
  std::map<std::string_view, std::size_t> kept;
  for (const auto* const list : {&package.environments, &package.events}) {
    for (const auto& row : *list) {
      kept[row.text] += row.count;
    }
  }
  for (const auto& refused : package.refused) {
    kept[refused.text] += refused.reason == "row nested too deeply" ? refused.count : 0;
  }
  for (const auto& row : rows) {
    check(!isJsonObject(row) || kept[withoutBlanks(row)]-- > 0,
          "the collector keeps every JSON object, as often as it was sent");
  }
}

void checkPass(Table table, const Texts& rows, std::size_t limit, std::size_t accepted) {
  test::MemoryDatabaseClient database;
  database.insertMultiple(rows, table);
  test::FakeConnection server;
  server.accepted = static_cast<int>(accepted);
  SilentLogger logger;
  details::SendingState state;
  details::SendingPass(database, server, logger, state, limit).run();

  const auto batches = batchesOf(rows, limit);
  const std::string list = table == Table::Items ? "events" : "environments";
  check(server.packages.size() == std::min(batches.size(), accepted + 1),
        "a refused package is the last one");
  std::size_t rowsAccepted = 0;
  for (std::size_t i = 0; i < server.packages.size(); ++i) {
    const auto& package = server.packages[i];
    check(package == packageOf(batches[i], list), "rows are packed byte for byte, up to the limit");
    checkCollected(package, batches[i]);
    rowsAccepted += i < accepted ? batches[i].size() : 0;
  }
  const Texts rest(rows.begin() + static_cast<std::ptrdiff_t>(rowsAccepted), rows.end());
  check(database.texts(table) == rest, "exactly the rows that were accepted are deleted");
}

}  // namespace qel::log::analytics

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qel::log::analytics;
  FuzzedDataProvider input(data, size);
  const auto table = input.ConsumeBool() ? Table::Items : Table::Environments;
  const auto limit = input.ConsumeIntegral<std::uint8_t>();
  const auto accepted = input.ConsumeIntegral<std::uint8_t>();
  Texts rows;
  while (input.remaining_bytes() > 0) {
    rows.push_back(input.ConsumeRandomLengthString());
  }
  checkPass(table, rows, limit, accepted);
  return 0;
}
