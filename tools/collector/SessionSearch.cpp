#include "tools/collector/SessionSearch.h"

#include <algorithm>
#include <string_view>
#include <vector>

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
  std::vector<std::string> ids;
  if (canBeginId(text)) {
    ids = reader.sessionsBeginningWith(text, mostFound, deadline);
    const records::SessionChoice choice(text);
    const auto equal =
        std::ranges::find_if(ids, [&](const std::string& id) { return choice.isExactly(id); });
    if (equal != ids.end()) {
      return *equal;
    }
  }
  if (ids.empty()) {
    throw ApiError(404, "The store has no session " + text + '.');
  }
  if (ids.size() > 1) {
    const std::string number =
        (ids.size() == mostFound ? "At least " : "") + std::to_string(ids.size());
    throw ApiError(409, number + " sessions begin with " + text + '.');
  }
  return ids.front();
}

}  // namespace qel::collector
