#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Items/ActionItem.h"
#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "tests/docs/RecordedEvents.h"

namespace {

using namespace qel::log::analytics::items;
using nlohmann::json;
using Texts = std::vector<std::string>;
using Lines = std::set<std::string>;

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
  std::ifstream page(QEL_EVENTS_PAGE);
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

void expectSame(const Lines& inPage, const Lines& inProgram) {
  for (const auto& line : inPage) {
    EXPECT_EQ(inProgram.count(line), 1U) << "only docs/events.md has: " << line;
  }
  for (const auto& line : inProgram) {
    EXPECT_EQ(inPage.count(line), 1U) << "docs/events.md lacks: " << line;
  }
}

// As the page writes them:
std::string code(const std::string& text) { return "`" + text + "`"; }

std::string textCell(const json& event, const char* member) {
  if (!event.contains(member)) {
    return "—";
  }
  const std::string text = event[member];
  return text == qel::test::hostsText ? "*host's text*" : text.empty() ? "*empty*" : code(text);
}

std::string keyCell(const std::string& key) {
  const bool isNumber = key.find_first_not_of("0123456789") == std::string::npos;
  return key == qel::test::hostsKeys ? "*host's keys*"
         : isNumber                  ? "*second of the reading*"
                                     : code(key);
}

std::string eventOf(const std::string& category, const std::string& subCategory,
                    const std::string& event) {
  return category + " | " + subCategory + " | " + event;
}

/// For each event the cells of its details each time.
std::map<std::string, std::vector<Lines>> gather(const Texts& events) {
  std::map<std::string, std::vector<Lines>> gathered;
  for (const auto& text : events) {
    const auto event = json::parse(text);
    const auto details = event.value("Details", std::map<std::string, std::string>());
    Lines keys;
    for (const auto& [key, value] : details) {
      keys.insert(keyCell(key));
    }
    gathered[eventOf(textCell(event, "Category"), textCell(event, "Subcategory"),
                     textCell(event, "Event"))]
        .push_back(keys);
  }
  return gathered;
}

/// The details' cell: what was not always there stands in parentheses.
Lines detailsOf(const std::vector<Lines>& occurrences) {
  Lines all;
  for (const auto& keys : occurrences) {
    for (const auto& key : keys) {
      const bool always = std::all_of(occurrences.begin(), occurrences.end(),
                                      [&](const Lines& other) { return other.count(key) != 0; });
      all.insert(always ? key : "(" + key + ")");
    }
  }
  return all.empty() ? Lines{"—"} : all;
}

std::string lineOf(const std::string& event, const Lines& details, bool isProduced) {
  std::string line = event + " |";
  for (const auto& key : details) {
    line += " " + key;
  }
  return line + (isProduced ? "" : " | nothing today");
}

TEST(EventsPageTest, ListsEveryEventAndNoOther) {
  Lines inProgram;
  const auto produced = gather(qel::test::producedEvents());
  for (const auto& [event, occurrences] : produced) {
    inProgram.insert(lineOf(event, detailsOf(occurrences), true));
  }
  for (const auto& [event, occurrences] : gather(qel::test::eventsOfAllClasses())) {
    if (produced.count(event) == 0) {
      inProgram.insert(lineOf(event, detailsOf(occurrences), false));
    }
  }
  Lines inPage;
  for (const auto& row : rowsUnder("## Events",
                                   "| Category | Subcategory | Event | Details | "
                                   "Cause | Personal data |")) {
    const auto details = split(row[3], ", ");
    for (const auto& category : split(row[0], " or ")) {
      for (const auto& subCategory : split(row[1], " or ")) {
        for (const auto& event : split(row[2], " or ")) {
          inPage.insert(lineOf(eventOf(category, subCategory, event),
                               Lines(details.begin(), details.end()),
                               !row[4].starts_with("*nothing today*")));
        }
      }
    }
  }
  expectSame(inPage, inProgram);
}

/// `text` has one element in each list, and "*" for the host's keys.
void expectMembersUnder(const std::string& heading, const std::string& text) {
  Lines inProgram;
  const auto members = json::parse(text).flatten();
  for (const auto& [pointer, value] : members.items()) {
    std::string path;
    for (const auto& part : split(pointer.substr(1), "/")) {
      path += part == "0" ? "[]" : (path.empty() ? "" : ".") + part;
    }
    inProgram.insert(code(path));
  }
  Lines inPage;
  for (const auto& row : rowsUnder(heading, "| Member | Holds | Personal data |")) {
    inPage.insert(row[0]);
  }
  expectSame(inPage, inProgram);
}

TEST(EventsPageTest, ListsTheMembersOfEventsAndOfTheEnvironment) {
  const std::map<std::string, std::string> map{{"*", ""}};
  expectMembersUnder("## What every event carries",
                     ActionItem(ActionArea::Help, "event", map).toJson());
  const EnvironmentItem environment({"", "", "", "", false, "", 96, ""}, {"", "", map},
                                    {{{}, true, "", {""}, map, map}}, false);
  expectMembersUnder("## The environment", environment.toJson());
}

}  // namespace
