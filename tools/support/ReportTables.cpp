#include "tools/support/ReportTables.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "tools/support/DisplayText.h"
#include "tools/support/DisplayTime.h"

namespace qel::support {
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

/// Template data of the first rows, each converted by `toData`; false if there are no rows.
template <typename Row, typename ToData>
data tableOf(const std::vector<Row>& rows, const ToData& toData) {
  constexpr std::size_t mostRows = 2000;
  if (rows.empty()) {
    return false;
  }
  const auto shown = std::span(rows).first(std::min(rows.size(), mostRows));
  const auto leftOut = static_cast<std::int64_t>(rows.size() - shown.size());
  data list(data::type::list);
  for (const auto& row : shown) {
    list << toData(row);
  }
  data table;
  table["rows"] = std::move(list);
  table["leftOut"] = leftOut > 0 ? data(grouped(leftOut)) : data(false);
  return table;
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
  return grouped(std::count_if(events.begin(), events.end(), [&](const Event& event) {
    return event.category == "IssueListStorage" && event.event == name;
  }));
}

}  // namespace

data commandTable(const std::vector<Event>& events) {
  std::map<std::pair<std::string, std::string>, CommandUse> uses;
  for (const auto& event : events) {
    if (event.category == "Command") {
      auto& use = uses[{event.event, std::string(event.detail("ID"))}];
      use.started += event.subcategory == "Started" ? 1 : 0;
      use.accepted += event.subcategory == "Accepted" ? 1 : 0;
      use.cancelled += event.subcategory == "Cancelled" ? 1 : 0;
    }
  }
  std::vector<std::pair<std::pair<std::string, std::string>, CommandUse>> sorted(uses.begin(),
                                                                                 uses.end());
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
    return left.second.started > right.second.started;
  });
  return tableOf(sorted, [](const auto& row) {
    const auto& [command, use] = row;
    return object{{"name", command.first},
                  {"id", command.second},
                  {"started", grouped(use.started)},
                  {"accepted", grouped(use.accepted)},
                  {"cancelled", grouped(use.cancelled)}};
  });
}

data issueTable(const std::vector<Event>& events) {
  auto table = tableOf(issuesOf(events), [](const Issue& issue) {
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
    auto table = tableOf(members, [](const Event* event) {
      return object{{"time", readableTime(event->time)},
                    {"what", titleOf(*event)},
                    {"details", detailsOf(*event)}};
    });
    table.set("name", category.empty() ? "(none)" : category);
    tables << table;
  }
  return tables;
}

}  // namespace qel::support
