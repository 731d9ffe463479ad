#include "tools/collector/ApiText.h"

#include <cmath>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include <nlohmann/json.hpp>

namespace qel::collector {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* jsonType = "application/json";

std::string textOf(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// ClickHouse writes whole numbers without a fraction, so SQLite's are written like them.
Json jsonOf(double value) {
  constexpr double mostExact = 1LL << 53;
  const bool isWhole = std::abs(value) < mostExact && std::trunc(value) == value;
  return isWhole ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

Json jsonOf(const Cell& cell) {
  return std::visit(
      [](const auto& value) {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, std::monostate>) {
          return Json();
        } else if constexpr (std::is_same_v<Value, double>) {
          return jsonOf(value);
        } else {
          return Json(value);
        }
      },
      cell);
}

bool looksLikeFormula(std::string_view text) {
  return !text.empty() &&
         std::string_view("=+-@\t\r\n").find(text.front()) != std::string_view::npos;
}

/// A text as a field of CSV, always in quotation marks.
std::string quoted(const std::string& text) {
  std::string field = looksLikeFormula(text) ? "\"'" : "\"";
  for (const char letter : text) {
    field.append(letter == '"' ? 2 : 1, letter);
  }
  return field + '"';
}

std::string fieldOf(const Cell& cell) {
  if (const auto* const text = std::get_if<std::string>(&cell)) {
    // JSON has replaced invalid UTF-8.
    return quoted(Json::parse(textOf(*text)).get<std::string>());
  }
  const std::string value = textOf(jsonOf(cell));
  return value == "null" ? "" : value;
}

}  // namespace

AdminPage jsonPage(const std::string& figure, const ResultTable& table) {
  Json rows = Json::array();
  for (const auto& row : table.rows) {
    Json cells = Json::array();
    for (const Cell& cell : row) {
      cells.push_back(jsonOf(cell));
    }
    rows.push_back(std::move(cells));
  }
  Json answer{{"figure", figure}, {"columns", table.columns}, {"rows", std::move(rows)}};
  if (!table.cursor.empty()) {
    answer["cursor"] = table.cursor;
  }
  return {textOf(answer) + '\n', 200, jsonType};
}

AdminPage csvPage(const std::string& figure, const ResultTable& table) {
  std::string text;
  for (const std::string& column : table.columns) {
    text.append(text.empty() ? "" : ",").append(column);
  }
  text += "\r\n";
  for (const auto& row : table.rows) {
    std::string_view separator;
    for (const Cell& cell : row) {
      text.append(separator).append(fieldOf(cell));
      separator = ",";
    }
    text += "\r\n";
  }
  return {std::move(text),
          200,
          "text/csv; charset=utf-8; header=present",
          {{"Content-Disposition", "attachment; filename=\"" + figure + ".csv\""}}};
}

AdminPage errorPage(int status, const std::string& reason) {
  return {textOf(Json{{"error", reason}}) + '\n', status, jsonType};
}

}  // namespace qel::collector
