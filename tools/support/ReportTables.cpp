#include "tools/support/ReportTables.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>
#include <tuple>
#include <utility>

#include "tools/support/DisplayText.h"
#include "tools/support/Html.h"
#include "tools/support/Moment.h"

namespace qel::support {
namespace {

using html::element;

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

/// A table's beginning; titles that begin with '#' stand over numbers.
std::string tableHead(const std::vector<std::string>& titles) {
  std::string head = "<div class=\"scroll\"><table><thead><tr>";
  for (const auto& title : titles) {
    const bool number = title.starts_with('#');
    head += element("th", number ? title.substr(1) : title, number ? "number" : "");
  }
  return head + "</tr></thead><tbody>\n";
}

constexpr std::size_t mostRows = 2000;

template <typename Row>
std::span<const Row> shown(const std::vector<Row>& rows) {
  return std::span(rows).first(std::min(rows.size(), mostRows));
}

/// The end of a table that shows some of `rows`; `what` are the others.
std::string tableEnd(std::size_t rows, const std::string& what) {
  const std::string end = "</tbody></table></div>\n";
  return rows <= mostRows ? end
                          : end + element("p",
                                          what + " that are left out: " +
                                              grouped(static_cast<std::int64_t>(rows - mostRows)) +
                                              "; \"qel-support show --category\" tells them.",
                                          "faint");
}

std::string number(std::int64_t value) { return element("td", grouped(value), "number"); }

std::string time(const std::string& text) { return element("td", readableTime(text), "time"); }

std::vector<Issue> issuesOf(const std::vector<Event>& events) {
  std::vector<Issue> issues;
  using Places = std::map<std::string, std::vector<std::size_t>>;  // by ID, oldest first
  Places open;
  Places emptied;  // removed with all others; clients may still tell the removal of each
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

std::string commandTable(const std::vector<Event>& events) {
  std::map<std::pair<std::string, std::string>, CommandUse> uses;
  for (const auto& event : events) {
    if (event.category == "Command") {
      auto& use = uses[{event.event, std::string(event.detail("ID"))}];
      use.started += event.subcategory == "Started" ? 1 : 0;
      use.accepted += event.subcategory == "Accepted" ? 1 : 0;
      use.cancelled += event.subcategory == "Cancelled" ? 1 : 0;
    }
  }
  if (uses.empty()) {
    return element("p", "No commands were recorded.", "faint");
  }
  std::vector<std::pair<std::pair<std::string, std::string>, CommandUse>> sorted(uses.begin(),
                                                                                 uses.end());
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
    return left.second.started > right.second.started;
  });
  std::string table = tableHead({"Command", "ID", "#Started", "#Accepted", "#Cancelled"});
  for (const auto& [command, use] : shown(sorted)) {
    table += "<tr>" + element("td", command.first) + element("td", command.second) +
             number(use.started) + number(use.accepted) + number(use.cancelled) + "</tr>\n";
  }
  return table + tableEnd(sorted.size(), "Less used commands");
}

std::string issueTable(const std::vector<Event>& events) {
  const auto issues = issuesOf(events);
  if (issues.empty()) {
    return element("p", "No issues were added or removed.", "faint");
  }
  std::string table =
      element("p", countOf(events, "Added") + " added, " + countOf(events, "Removed") +
                       " removed one by one; times that the list was emptied: " +
                       countOf(events, "RemovedAll") + ".");
  table += tableHead({"Issue", "Priority", "Added (UTC)", "Removed (UTC)"});
  for (const auto& issue : shown(issues)) {
    table += "<tr><td>" + html::content(issue.description) + "<br>" +
             element("code", issue.id, "faint") + "</td>" + element("td", issue.priority) +
             time(issue.added.empty() ? "before" : issue.added) +
             time(issue.removed.empty() ? "not" : issue.removed) + "</tr>\n";
  }
  return table + tableEnd(issues.size(), "Later issues");
}

std::string eventTables(const std::vector<Event>& events) {
  if (events.empty()) {
    return element("p", "No records could be read.", "faint");
  }
  std::map<std::string, std::vector<const Event*>> byCategory;
  for (const auto& event : events) {
    byCategory[event.category].push_back(&event);
  }
  std::string tables;
  for (const auto& [category, members] : byCategory) {
    tables += element("h3", category.empty() ? "(none)" : category);
    tables += tableHead({"Time (UTC)", "What", "Details"});
    for (const auto* const event : shown(members)) {
      tables += "<tr>" + time(event->time) + element("td", titleOf(*event)) +
                element("td", detailsOf(*event)) + "</tr>\n";
    }
    tables += tableEnd(members.size(), "Later records");
  }
  return tables;
}

}  // namespace qel::support
