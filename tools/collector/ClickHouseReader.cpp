#include "tools/collector/ClickHouseReader.h"

#include <algorithm>
#include <chrono>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tools/collector/ClickHouseFigures.h"
#include "tools/collector/ClickHouseQuestion.h"
#include "tools/collector/ClickHouseSchema.h"
#include "tools/collector/ClickHouseText.h"
#include "tools/collector/RowKey.h"

namespace qel::collector {
namespace {

using nlohmann::json;

Cell cellOf(const json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_number_integer()) {
    return value.get<std::int64_t>();
  }
  return value.is_number() ? Cell(value.get<double>()) : Cell();
}

std::vector<std::string> namesOf(std::string_view columns) {
  std::vector<std::string> names;
  std::istringstream list{std::string(columns)};
  for (std::string name; std::getline(list, name, ',');) {
    names.push_back(name);
  }
  return names;
}

/// Days that ClickHouse knows, instead of earlier or later ones. It has no others.
Filter withPossibleDays(Filter filter) {
  for (std::string* const day : {&filter.from, &filter.until}) {
    if (!day->empty()) {
      *day = std::clamp<std::string>(*day, "1970-01-01", "2105-12-31");
    }
  }
  return filter;
}

/// A row that arrived earlier is stored: an insert takes less time, and the clocks of several
/// collectors differ by less.
constexpr std::chrono::seconds longestInsert{60};

/// The cursor of "live" up to which all rows were examined now: it sorts as those of rows.
std::string examinedCursor() {
  const auto arrival = std::chrono::floor<std::chrono::milliseconds>(
      std::chrono::system_clock::now().time_since_epoch() - longestInsert);
  return std::to_string(10'000'000'000'000 + arrival.count()) + "-10000000000-" +
         std::string(2 * clickHouseKeySize, '0');
}

/// Asks for the newest records of a session.
std::string questionFor(const std::string& columns, const std::string& table,
                        const std::string& session, std::size_t limit) {
  const auto literal = [](const Sha256& key) {
    return "toFixedString(" + sqlLiteral(bytesOf(key).substr(0, clickHouseKeySize)) + ", " +
           std::to_string(clickHouseKeySize) + ')';
  };
  const KeyRange keys = keysOf(session);
  return "SELECT " + columns + " FROM " + table + " FINAL WHERE key >= " + literal(keys.first) +
         " AND key <= " + literal(keys.last) + " AND session = " + sqlLiteral(session) +
         " ORDER BY received DESC, received_ms DESC, place DESC LIMIT " + std::to_string(limit);
}

}  // namespace

ResultTable ClickHouseReader::read(std::string_view figure, const Filter& filter,
                                   std::chrono::steady_clock::time_point deadline) {
  const ClickHouseFigure& known = clickHouseFigure(figure);
  const std::string examined = examinedCursor();
  ResultTable table{
      namesOf(known.columns), ask(known.question(withPossibleDays(filter)), deadline), {}};
  if (figure == "live" && table.rows.size() < filter.limit) {
    const auto last = table.rows.empty() ? Cell(filter.after) : table.rows.back().front();
    table.cursor = std::max(examined, std::get<std::string>(last));
  }
  return table;
}

StoredSession ClickHouseReader::session(const std::string& id,
                                        std::chrono::steady_clock::time_point deadline) {
  StoredSession found;
  std::int64_t bytes = 0;
  for (const bool isEnvironment : {true, false}) {
    const std::string table = isEnvironment ? "environments" : "events";
    const std::size_t most = SessionLimits::records - found.records.size();
    std::size_t fitting = 0;
    for (const auto& row : ask(questionFor("length(text)", table, id, most + 1), deadline)) {
      bytes += std::get<std::int64_t>(row.at(0));
      if (fitting == most || bytes > std::int64_t{SessionLimits::bytes}) {
        found.isShortened = true;
        break;
      }
      ++fitting;
    }
    if (fitting == 0) {
      continue;
    }
    auto rows = ask(questionFor("count, text", table, id, fitting), deadline);
    std::reverse(rows.begin(), rows.end());
    for (auto& row : rows) {
      found.records.push_back({isEnvironment, std::get<std::string>(std::move(row.at(1))),
                               std::get<std::int64_t>(row.at(0))});
    }
  }
  return found;
}

std::vector<std::string> ClickHouseReader::sessionsBeginningWith(
    const std::string& beginning, std::size_t limit,
    std::chrono::steady_clock::time_point deadline) {
  const std::string question =
      "SELECT DISTINCT session FROM (SELECT DISTINCT session FROM session_days UNION ALL"
      " SELECT DISTINCT session FROM environments) WHERE " +
      sessionBeginsWith(beginning) + " ORDER BY length(session), session LIMIT " +
      std::to_string(limit);
  std::vector<std::string> ids;
  for (auto& row : ask(question, deadline)) {
    ids.push_back(std::get<std::string>(std::move(row.front())));
  }
  return ids;
}

std::vector<std::vector<Cell>> ClickHouseReader::ask(
    const std::string& question, std::chrono::steady_clock::time_point deadline) {
  const std::string answer = connection_.run(question + " FORMAT JSONCompact", deadline);
  const json result = json::parse(answer, nullptr, false);
  if (!result.is_object() || !result.contains("data")) {
    connection_.fail("the answer is no JSON");
  }
  std::vector<std::vector<Cell>> rows;
  for (const json& row : result["data"]) {
    auto& cells = rows.emplace_back();
    for (const json& value : row) {
      cells.push_back(cellOf(value));
    }
  }
  return rows;
}

}  // namespace qel::collector
