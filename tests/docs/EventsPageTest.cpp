#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Application/Log/Analytics/Items/ActionItem.h"
#include "Application/Log/Analytics/Items/ApplicationItem.h"
#include "Application/Log/Analytics/Items/BimFileItem.h"
#include "Application/Log/Analytics/Items/BimModelItem.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Items/CrashReportItem.h"
#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "Application/Log/Analytics/Items/IssueListStorageEvent.h"
#include "Application/Log/Analytics/Items/IssueListUserActionEvent.h"
#include "Application/Log/Analytics/Items/MemoryUsageItem.h"
#include "Application/Log/Analytics/Items/PresentationItem.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"
#include "Application/Log/Analytics/Items/UserInfoItem.h"
#include "tests/support/StoredEvent.h"

namespace {

using namespace qel::log::analytics::items;
using Texts = std::vector<std::string>;
using Cells = std::set<std::string>;

Texts split(std::string text, const std::string& separator) {
  Texts parts;
  for (auto end = text.find(separator); end != std::string::npos; end = text.find(separator)) {
    parts.push_back(text.substr(0, end));
    text.erase(0, end + separator.size());
  }
  parts.push_back(text);
  return parts;
}

/// The rows of the table under a heading of the page; its head must be the one given.
std::vector<Texts> rowsUnder(const std::string& heading, const std::string& head) {
  std::ifstream page(QEL_SOURCE_DIR "/docs/events.md");
  std::string line;
  while (line != heading && std::getline(page, line)) {
  }
  while (line != head && std::getline(page, line)) {
  }
  std::getline(page, line);
  std::vector<Texts> rows;
  while (std::getline(page, line) && line.starts_with("| ")) {
    rows.push_back(split(line.substr(2, line.size() - 4), " | "));
    EXPECT_EQ(rows.back().size(), split(head, " | ").size()) << line;
    EXPECT_THAT(rows.back().back(), testing::MatchesRegex("(No|(Possible|Yes): .*)")) << line;
  }
  return rows;
}

std::string code(const std::string& text) { return "`" + text + "`"; }

/// What a session with every notification stores, and what the client reports of itself.
Texts producedEvents() {
  Texts events{"MemoryUsage|Application|Runtime|Max=1;Min=1",
               "MemoryUsage|Total|Runtime|Max=1;Min=1",
               "MemoryUsage|Application|Crashed|1753099200=1;Max=1;Min=1",
               "MemoryUsage|Total|Crashed|1753099200=1;Max=1;Min=1",
               "CIP|Database|CriticalLarge|",
               "CIP|InsertingItems|CriticalLarge|Message=m",
               "CIP|SendingItems|Exception|Message=m"};
  std::ifstream stored(QEL_SOURCE_DIR "/tests/tools/sample-host/everything.items");
  for (std::string line; std::getline(stored, line);) {
    events.push_back(line);
  }
  return events;
}

/// Every kind, those without a name included, of the classes with kinds that nothing makes today.
Texts eventsOfAllClasses() {
  Texts events;
  const auto note = [&](const BaseEventItem& item) {
    events.push_back(qel::test::summaryOf(item.toJson()));
  };
  note(CrashReportItem("e"));
  note(UserInfoItem());
  constexpr std::uint32_t moreThanAnyEnumerationNames = 16;
  for (std::uint32_t kind = 0; kind < moreThanAnyEnumerationNames; ++kind) {
    note(ActionItem(ActionArea{kind}, "e", {}));
    note(ApplicationItem("e", ApplicationItem::Type{kind}, 1));
    note(BimFileItem("e", FocusKind{kind}));
    note(BimModelItem("e", FocusKind{kind}));
    note(PresentationItem("e", FocusKind{kind}));
    note(CommandItem("e", CommandItem::State{kind}, {}));
    note(ProjectItem(ProjectItem::Event{kind}, "e"));
    note(IssueListStorageEvent(IssueListStorageEvent::Change{kind}));
    for (std::uint32_t other = 0; other < moreThanAnyEnumerationNames; ++other) {
      for (const char* message : {"", "message"}) {
        note(CipInfoItem(CipInfoItem::Area{kind}, CipInfoItem::Severity{other}, message));
      }
      note(MemoryUsageItem(MemoryUsageItem::Scope{kind}, MemoryUsageItem::Phase{other}));
      note(IssueListUserActionEvent(IssueListUserActionEvent::List{kind},
                                    IssueListUserActionEvent::Control{other}));
    }
  }
  return events;
}

/// A row of the table of events, and what was found to stand in it.
struct Row {
  bool isProduced;
  Cells details;
  Cells unseen;  ///< combinations of its cells
  std::vector<Cells> seenDetails;
};

/// The details' cell: what was not always there stands in parentheses.
Cells detailsOf(const std::vector<Cells>& occurrences) {
  Cells all;
  for (const auto& keys : occurrences) {
    for (const auto& key : keys) {
      const bool always = std::all_of(occurrences.begin(), occurrences.end(),
                                      [&](const Cells& other) { return other.count(key) != 0; });
      all.insert(always ? key : "(" + key + ")");
    }
  }
  return all.empty() ? Cells{"—"} : all;
}

/// Notes an event in its row, given the rows by the combinations of their cells.
void note(const std::string& event, bool isProduced, const std::map<std::string, Row*>& rowOf) {
  const auto parts = split(event, "|");
  const auto cell = [](const std::string& text) { return text.empty() ? "—" : code(text); };
  const auto start = cell(parts[0]) + " | " + cell(parts[1]) + " | ";
  std::string combination = start + cell(parts[2]);
  if (parts[0] == "Plan") {
    combination = "*host's text* | *host's text* | *host's text*";
  } else if (parts[0].empty()) {
    combination = "*empty* | — | —";
  } else if (rowOf.count(combination) == 0) {
    combination = start + "*host's text*";
  }
  const auto found = rowOf.find(combination);
  ASSERT_NE(found, rowOf.end()) << "docs/events.md lacks " << event;
  auto& row = *found->second;
  EXPECT_TRUE(row.isProduced || !isProduced) << "docs/events.md has as not made: " << event;
  if (row.isProduced == isProduced) {
    row.unseen.erase(combination);
    Cells keys;
    for (const auto& detail : split(parts[3], ";")) {
      keys.insert(code(detail.substr(0, detail.find('='))));
    }
    row.seenDetails.push_back(parts[3].empty() ? Cells() : keys);
  }
}

TEST(EventsPageTest, ListsEveryEventAndNoOther) {
  std::vector<Row> rows;
  std::map<std::string, Row*> rowOf;
  const auto inPage = rowsUnder(
      "## Events", "| Category | Subcategory | Event | Details | Cause | Personal data |");
  rows.reserve(inPage.size());
  for (const auto& cells : inPage) {
    const auto details = split(cells[3], ", ");
    auto& row = rows.emplace_back(Row{
        !cells[4].starts_with("*nothing today*"), Cells(details.begin(), details.end()), {}, {}});
    for (const auto& category : split(cells[0], " or ")) {
      for (const auto& subCategory : split(cells[1], " or ")) {
        for (const auto& event : split(cells[2], " or ")) {
          rowOf[*row.unseen.insert(category + " | " + subCategory + " | " + event).first] = &row;
        }
      }
    }
  }
  for (const auto& event : producedEvents()) {
    note(event, true, rowOf);
  }
  for (const auto& event : eventsOfAllClasses()) {
    note(event, false, rowOf);
  }
  for (auto& [isProduced, details, unseen, seenDetails] : rows) {
    EXPECT_THAT(unseen, testing::IsEmpty()) << "only docs/events.md has these";
    if (details.erase("*host's keys*") + details.erase("*second of the reading*") == 0) {
      EXPECT_EQ(details, detailsOf(seenDetails));
    } else {
      EXPECT_THAT(detailsOf(seenDetails), testing::IsSupersetOf(details));
    }
  }
}

/// `text` has one element in each list, and "*" for the host's keys.
Cells membersOf(const std::string& text) {
  Cells members;
  const auto flat = nlohmann::json::parse(text).flatten();
  for (const auto& [pointer, value] : flat.items()) {
    std::string path;
    for (const auto& part : split(pointer.substr(1), "/")) {
      path += part == "0" ? "[]" : (path.empty() ? "" : ".") + part;
    }
    members.insert(code(path));
  }
  return members;
}

TEST(EventsPageTest, ListsTheMembersOfEventsAndOfTheEnvironment) {
  const std::map<std::string, std::string> map{{"*", ""}};
  const EnvironmentItem environment({"", "", "", "", false, "", 96, ""}, {"", "", map},
                                    {{{}, true, "", {""}, map, map}}, false);
  const std::pair<const char*, std::string> cases[] = {
      {"## What every event carries", ActionItem(ActionArea::Help, "event", map).toJson()},
      {"## The environment", environment.toJson()}};
  for (const auto& [heading, text] : cases) {
    Cells inPage;
    for (const auto& row : rowsUnder(heading, "| Member | Holds | Personal data |")) {
      inPage.insert(row[0]);
    }
    EXPECT_EQ(inPage, membersOf(text));
  }
}

}  // namespace
