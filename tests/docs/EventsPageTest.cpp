#include <fstream>

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

std::vector<std::string> linesOf(const std::string& file) {
  std::ifstream stream(QEL_SOURCE_DIR "/tests/" + file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// Every kind, the first without a name included, of the classes with kinds that nothing makes
/// today.
Texts eventsOfAllClasses() {
  Texts events;
  const auto note = [&](const auto& makeItem) {
    for (std::uint32_t kind = 0; kind < 6; ++kind) {
      events.push_back(qel::test::summaryOf(makeItem(kind).toJson()));
    }
  };
  note([](auto kind) { return ActionItem(ActionArea{kind}, "e", {}); });
  note([](auto kind) { return ApplicationItem("e", ApplicationItem::Type{kind}, 1); });
  note([](auto kind) { return BimFileItem("e", FocusKind{kind}); });
  note([](auto kind) { return BimModelItem("e", FocusKind{kind}); });
  note([](auto kind) { return PresentationItem("e", FocusKind{kind}); });
  note([](auto kind) { return CommandItem("e", CommandItem::State{kind}, {}); });
  note([](auto kind) { return ProjectItem(ProjectItem::Event{kind}, "e"); });
  note([](auto kind) { return IssueListStorageEvent(IssueListStorageEvent::Change{kind}); });
  using Action = IssueListUserActionEvent;
  using Memory = MemoryUsageItem;
  using Info = CipInfoItem;
  for (std::uint32_t kind = 0; kind < 6; ++kind) {
    note([=](auto other) { return Action(Action::List{kind}, Action::Control{other}); });
    note([=](auto other) { return Memory(Memory::Scope{kind}, Memory::Phase{other}); });
    note([=](auto other) { return Info(Info::Area{kind}, Info::Severity{other}, "m"); });
  }
  return events;
}

/// The numbers that the enumerators stand for are part of what a host is compiled against.
TEST(EventsPageTest, EveryKindHasItsNumberAndText) {
  EXPECT_THAT(eventsOfAllClasses(), testing::ElementsAreArray(linesOf("docs/kinds.items")));
}

/// A row of the table of events, and which of its details and combinations were not seen yet.
struct Row {
  bool isProduced;
  Cells details;
  Cells unseenDetails = details;
  Cells unseen = {};
};

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
  if (row.isProduced != isProduced) {
    return;
  }
  row.unseen.erase(combination);
  const bool isOpen =
      row.details.contains("*host's keys*") || row.details.contains("*second of the reading*");
  for (const auto& detail : split(parts[3], ";")) {
    const auto key = code(detail.substr(0, detail.find('=')));
    row.unseenDetails.erase(key);
    row.unseenDetails.erase("(" + key + ")");
    EXPECT_TRUE(isOpen || parts[3].empty() || row.details.contains(key) ||
                row.details.contains("(" + key + ")"))
        << "docs/events.md lacks " << key << " of " << event;
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
    auto& row = rows.emplace_back(
        Row{!cells[4].starts_with("*nothing today*"), Cells(details.begin(), details.end())});
    for (const auto& category : split(cells[0], " or ")) {
      for (const auto& subCategory : split(cells[1], " or ")) {
        for (const auto& event : split(cells[2], " or ")) {
          rowOf[*row.unseen.insert(category + " | " + subCategory + " | " + event).first] = &row;
        }
      }
    }
  }
  // What a session with every notification stores, and what the client reports of itself.
  for (const char* const file : {"tools/sample-host/everything.items", "docs/client.items"}) {
    for (const auto& event : linesOf(file)) {
      note(event, true, rowOf);
    }
  }
  note(qel::test::summaryOf(UserInfoItem().toJson()), false, rowOf);
  note(qel::test::summaryOf(CrashReportItem("e").toJson()), false, rowOf);
  for (const auto& event : eventsOfAllClasses()) {
    note(event, false, rowOf);
  }
  for (const auto& row : rows) {
    EXPECT_THAT(row.unseen, testing::IsEmpty()) << "only docs/events.md has these";
    EXPECT_THAT(row.unseenDetails, testing::Each(testing::Not(testing::HasSubstr("`"))));
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
