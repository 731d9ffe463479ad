#include "tools/collector/PackageReader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "tools/collector/PackageSplitter.h"

namespace qel::collector {
namespace {

using log::analytics::format::packageVersion;

/// The maximum size of a frame (a package without its rows) in bytes. A client's frame has 60
/// bytes.
constexpr std::size_t longestFrame = 4096;

std::string_view reasonFor(tools::RowVerdict verdict) {
  return verdict == tools::RowVerdict::NestedTooDeeply ? "row nested too deeply"
                                                       : "row is no JSON object";
}

/// The names of the frame's lists, in order; `std::nullopt` if it is not the frame of a package.
std::optional<std::vector<std::string>> listNames(const std::string& frame) {
  using Json = nlohmann::ordered_json;
  if (frame.size() > longestFrame || frame.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  std::size_t members = 0;
  const auto countMembers = [&](int depth, Json::parse_event_t event, const Json& /*value*/) {
    members += depth == 1 && event == Json::parse_event_t::key ? 1 : 0;
    return true;
  };
  const auto parsed = Json::parse(frame, countMembers, /*allow_exceptions=*/false);
  if (!parsed.is_object() || !parsed.contains("version") || parsed["version"] != packageVersion) {
    return std::nullopt;
  }
  std::vector<std::string> names;
  for (const auto& [name, value] : parsed.items()) {
    if (value.is_array()) {
      names.push_back(name);
    }
  }
  // A frame with duplicate or unknown members is not accepted, because these members would be lost.
  const bool isWhole = members == 1 + names.size();
  return isWhole ? std::optional(std::move(names)) : std::nullopt;
}

/// The distinct texts of `rows`, in the order of their first occurrence, and how often each occurs.
/// Does not use hashes, because a sender could choose texts with equal ones.
std::vector<std::pair<std::string_view, std::size_t>> counted(
    const std::vector<std::string_view>& rows) {
  std::vector<std::pair<std::string_view, std::size_t>> distinct;
  std::map<std::string_view, std::size_t> places;
  for (const auto row : rows) {
    const auto [place, added] = places.emplace(row, distinct.size());
    if (added) {
      distinct.emplace_back(row, 0);
    }
    ++distinct[place->second].second;
  }
  return distinct;
}

void readRows(const std::vector<std::string_view>& texts, std::vector<Row>& rows,
              std::vector<RefusedText>& refused) {
  for (const auto& [text, count] : counted(texts)) {
    auto [verdict, columns] = tools::readRow(text);
    if (verdict == tools::RowVerdict::Sound) {
      rows.push_back({text, count, std::move(columns)});
    } else {
      refused.push_back({text, count, reasonFor(verdict)});
    }
  }
}

Package refusedWhole(std::string_view body) { return {{}, {}, {{body, 1, "no package"}}}; }

}  // namespace

std::size_t memoryOfRows(std::string_view body) {
  const auto objects = static_cast<std::size_t>(std::count(body.begin(), body.end(), '{'));
  return std::min(objects, mostRows) * sizeof(Row);
}

Package readPackage(std::string_view body) {
  const auto split = splitPackage(body, mostRows);
  if (!split) {
    return refusedWhole(body);
  }
  const auto names = listNames(split->frame);
  if (!names) {
    return refusedWhole(body);
  }
  Package package;
  for (std::size_t list = 0; list < names->size(); ++list) {
    const std::string& name = (*names)[list];
    if (name != "environments" && name != "events") {
      return refusedWhole(body);
    }
    readRows(split->lists[list], name == "events" ? package.events : package.environments,
             package.refused);
  }
  return package;
}

}  // namespace qel::collector
