#include "tools/report/ReportTables.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "tools/report/DisplayText.h"
#include "tools/report/DisplayTime.h"
#include "tools/report/EventText.h"

namespace qel::report {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::object;
using records::Event;

struct CommandUse {
  std::int64_t started = 0;
  std::int64_t accepted = 0;
  std::int64_t cancelled = 0;
};

struct Issue {
  std::string id;
  std::string description;
  std::string priority;
  std::string added;
  std::string removed;
};

constexpr std::size_t mostRows = 2000;

data countOrFalse(std::size_t count) {
  return count > 0 ? data(grouped(static_cast<std::int64_t>(count))) : data(false);
}

/// Template data of the last rows, each converted by `toData`; false if there are no rows.
template <typename Row, typename ToData>
data tableOf(std::span<const Row> rows, const ToData& toData, std::size_t most = mostRows) {
  if (rows.empty()) {
    return false;
  }
  const auto shown = rows.last(std::min(rows.size(), most));
  data list(data::type::list);
  for (const auto& row : shown) {
    list << toData(row);
  }
  data table;
  table["rows"] = std::move(list);
  table["leftOut"] = countOrFalse(rows.size() - shown.size());
  return table;
}

/// The time with milliseconds, as far as the record has them.
std::string preciseTime(const Event& event) {
  const auto [day, clock] = clockTime(event.time, Zone::Utc);
  return clock == event.time ? clock : day + ' ' + clock;
}

object rowOf(const Event& event) {
  const auto [what, details] = textOf(event);
  return object{{"time", preciseTime(event)},
                {"category", event.category},
                {"what", what},
                {"details", details},
                {"isCrash", isCrash(event)}};
}

std::vector<Issue> issuesOf(const std::vector<Event>& events) {
  std::vector<Issue> issues;
  using Places = std::map<std::string, std::vector<std::size_t>>;  // positions by ID, oldest first
  Places open;
  Places emptied;  // removed all at once; a client may still report the removal of each
  for (const auto& event : events) {
    if (event.category != "IssueListStorage") {
      continue;
    }
    if (event.event == "RemovedAll") {
      for (const auto& [id, places] : open) {
        for (const auto place : places) {
          issues[place].removed = event.time;
        }
      }
      emptied.merge(open);
      open.clear();
      continue;
    }
    const std::string id(event.detail("Id"));
    const bool removed = event.event == "Removed";
    auto& places = removed && open[id].empty() ? emptied[id] : open[id];
    if (removed && !places.empty()) {
      issues[places.back()].removed = event.time;
      places.pop_back();
      continue;
    }
    if (!removed) {
      places.push_back(issues.size());
    }
    issues.push_back({id, std::string(event.detail("Description")),
                      std::string(event.detail("Priority")), removed ? "" : event.time,
                      removed ? event.time : ""});
  }
  return issues;
}

std::string countOf(const std::vector<Event>& events, const char* name) {
  return grouped(countIf(events, [&](const Event& event) {
    return event.category == "IssueListStorage" && event.event == name;
  }));
}

}  // namespace

data endTable(const std::vector<Event>& events, const Ending& ending) {
  constexpr std::size_t mostBefore = 200;
  constexpr std::size_t mostAfter = 200;
  const std::size_t upToEnd = std::min(ending.place + 1, events.size());
  const std::size_t shownAfter = std::min(events.size() - upToEnd, mostAfter);
  const std::size_t itself = ending.place < events.size() ? 1 : 0;
  const auto toData = [&](const Event& event) {
    auto row = rowOf(event);
    row["isLast"] = &event == events.data() + ending.place;
    return row;
  };
  auto table = tableOf(std::span(events).first(upToEnd + shownAfter), toData,
                       mostBefore + itself + shownAfter);
  if (table.is_object()) {
    table.set("leftOutAfter", countOrFalse(events.size() - upToEnd - shownAfter));
  }
  return table;
}

data commandTable(const std::vector<Event>& events) {
  std::map<std::pair<std::string, std::string>, CommandUse> uses;
  for (const auto& event : events) {
    if (event.category == "Command") {
      auto& use = uses[{event.event, std::string(event.detail("ID"))}];
      use.started += event.subcategory == "Started" ? event.count : 0;
      use.accepted += event.subcategory == "Accepted" ? event.count : 0;
      use.cancelled += event.subcategory == "Cancelled" ? event.count : 0;
    }
  }
  std::vector<std::pair<std::pair<std::string, std::string>, CommandUse>> sorted(uses.begin(),
                                                                                 uses.end());
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
    return left.second.started > right.second.started;
  });
  const auto used = std::span(std::as_const(sorted));
  const auto shown = used.first(std::min(used.size(), mostRows));
  auto table = tableOf(shown, [](const auto& row) {
    const auto& [command, use] = row;
    return object{{"name", command.first},
                  {"id", command.second},
                  {"started", grouped(use.started)},
                  {"accepted", grouped(use.accepted)},
                  {"cancelled", grouped(use.cancelled)}};
  });
  if (table.is_object()) {
    table.set("leftOut", countOrFalse(used.size() - shown.size()));
  }
  return table;
}

data issueTable(const std::vector<Event>& events) {
  const auto issues = issuesOf(events);
  auto table = tableOf(std::span(issues), [](const Issue& issue) {
    return object{{"id", issue.id},
                  {"description", issue.description},
                  {"priority", issue.priority},
                  {"added", issue.added.empty() ? "before" : readableTime(issue.added)},
                  {"removed", issue.removed.empty() ? "not" : readableTime(issue.removed)}};
  });
  table.set("added", countOf(events, "Added"));
  table.set("removed", countOf(events, "Removed"));
  table.set("emptied", countOf(events, "RemovedAll"));
  return table;
}

data eventTables(const std::vector<Event>& events) {
  std::map<std::string, std::vector<const Event*>> byCategory;
  for (const auto& event : events) {
    byCategory[event.category].push_back(&event);
  }
  data tables(data::type::list);
  for (const auto& [category, members] : byCategory) {
    auto table = tableOf(std::span(std::as_const(members)),
                         [](const Event* event) { return rowOf(*event); });
    table.set("name", category.empty() ? "(none)" : category);
    tables << table;
  }
  return tables;
}

}  // namespace qel::report
