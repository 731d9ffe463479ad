#include "tools/collector/SessionSearch.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "tools/collector/ApiRequest.h"
#include "tools/records/SessionChoice.h"

namespace qel::collector {
namespace {

constexpr std::size_t mostFound = 1000;

bool canBeginId(const std::string& text) {
  constexpr std::string_view digits = "0123456789abcdefABCDEF";
  constexpr std::string_view others = "-{}";
  constexpr std::ptrdiff_t fewestDigits = 4;
  const auto isIn = [](std::string_view letters) {
    return [letters](char c) { return letters.find(c) != std::string_view::npos; };
  };
  const auto found = std::ranges::count_if(text, isIn(digits));
  const auto skipped = std::ranges::count_if(text, isIn(others));
  return found >= fewestDigits && found + skipped == std::ssize(text);
}

}  // namespace

std::string idBeginningWith(const std::string& text, StoreReader& reader,
                            std::chrono::steady_clock::time_point deadline) {
  std::set<std::string> ids;
  std::size_t rows = 0;
  if (canBeginId(text)) {
    const records::SessionChoice choice(text);
    Filter filter;
    filter.session = text;
    filter.limit = mostFound;
    for (const auto& row : reader.read("sessions", filter, deadline).rows) {
      const auto& id = std::get<std::string>(row.front());
      if (choice.isExactly(id)) {
        return id;
      }
      ids.insert(id);
      ++rows;
    }
  }
  if (ids.empty()) {
    throw ApiError(404, "The store has no session " + text + '.');
  }
  if (ids.size() > 1) {
    const std::string number = (rows == mostFound ? "At least " : "") + std::to_string(ids.size());
    throw ApiError(409, number + " sessions begin with " + text + '.');
  }
  return *ids.begin();
}

}  // namespace qel::collector
