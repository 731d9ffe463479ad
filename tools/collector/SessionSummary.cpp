#include "tools/collector/SessionSummary.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include <nlohmann/json.hpp>

#include "tools/records/Moment.h"

namespace qel::collector {
namespace {

using Json = nlohmann::json;

constexpr std::size_t sizeOfDay = std::string_view("YYYY-MM-DD").size();

std::string_view dateOrNone(std::string_view time) {
  return records::millisecondsOf(time) ? time : std::string_view();
}

/// A member of a member: a string without its quotes, or another value as JSON. Empty if there is
/// none.
std::string memberOf(std::string_view text, const char* object, const char* name) {
  const auto row = Json::parse(text, nullptr, false);
  const Json::json_pointer place = Json::json_pointer() / object / name;
  if (!row.is_object() || !row.contains(place)) {
    return "";
  }
  const Json& value = row[place];
  return value.is_string() ? value.get<std::string>() : value.dump();
}

}  // namespace

void SessionSummary::addEvent(const SummedRow& row) {
  countEvent(row);
  if (row.session.empty()) {
    return;
  }
  const std::string_view date = dateOrNone(row.time);
  widen(date);
  if (row.category == "Command" && row.subcategory == "Started") {
    lastCommand = row.event;
  } else if (row.category == memoryCategory && row.subcategory == "Application") {
    addReading(row, date);
  }
}

void SessionSummary::countEvent(const SummedRow& row) {
  const std::string_view date = dateOrNone(row.time);
  events += row.count;
  const auto count = [&](std::string_view kind, std::string_view name) {
    if (!date.empty()) {
      daily[{kind, std::string(date.substr(0, sizeOfDay)), std::string(name)}] += row.count;
    }
  };
  count(category, row.category);
  if (row.category == "Command") {
    if (row.subcategory == "Started") {
      count(started, row.event);
    } else if (row.subcategory == "Cancelled") {
      count(cancelled, row.event);
    }
  } else if (row.category == "Application") {
    if (row.subcategory == "Crashed") {
      crashed += row.count;
      crashes.push_back({row.id, std::string(date), memberOf(row.text, "Details", "Exception Code"),
                         lastCommand, row.count});
    } else if (row.subcategory == "Stopped") {
      stopped += row.count;
    }
  }
}

void SessionSummary::addReading(const SummedRow& row, std::string_view date) {
  const std::string text = memberOf(row.text, "Details", "Max");
  const char* const end = text.data() + text.size();
  std::int64_t kilobytes = 0;
  const auto [parsed, error] = std::from_chars(text.data(), end, kilobytes);
  if (error == std::errc() && parsed == end && kilobytes >= 0 && !date.empty()) {
    auto& highest = daily[{memory, std::string(date.substr(0, sizeOfDay)), ""}];
    highest = std::max(highest, kilobytes);
  }
}

void SessionSummary::widen(std::string_view date) {
  if (date.empty()) {
    return;
  }
  if (first.empty() || date < first) {
    first = date;
  }
  if (date > last) {
    last = date;
  }
}

void SessionSummary::addEnvironment(const SummedRow& row) {
  countEnvironment(row);
  if (row.session.empty()) {
    return;
  }
  const std::string_view date = dateOrNone(row.time);
  widen(date);
  std::string name = memberOf(row.text, "CurrentActiveApplication", "Version");
  using View = std::pair<std::string_view, std::string_view>;
  if (!name.empty() && View(date, name) > View(versionTime, version)) {
    version = std::move(name);
    versionTime = date;
  }
}

}  // namespace qel::collector
