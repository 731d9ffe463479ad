#include "tools/support/StatisticsOutput.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "host/QelUtilities/PathText.h"
#include "tools/report/DisplayText.h"
#include "tools/report/DisplayTime.h"
#include "tools/support/TextTable.h"

namespace qel::support {
namespace {

using Kind = TextTable::Column::Kind;
using Json = nlohmann::ordered_json;

void printLine(const std::string& text, std::ostream& output, const Terminal& terminal) {
  for (const auto& line : report::wrapped(text, terminal.width.value_or(text.size()))) {
    output << line << '\n';
  }
}

void printFiles(const Statistics& statistics, std::ostream& output, const Terminal& terminal) {
  TextTable table({{"File"},
                   {"Size", Kind::Right},
                   {"Environments", Kind::Right},
                   {"Items", Kind::Right},
                   {report::timeTitle("Oldest", terminal.zone), Kind::Wrapped},
                   {report::timeTitle("Newest", terminal.zone), Kind::Wrapped}});
  for (const auto& file : statistics.files) {
    table.add({file.name, report::readableSize(file.bytes), report::grouped(file.environments),
               report::grouped(file.events), report::readableTime(file.oldest, terminal.zone),
               report::readableTime(file.newest, terminal.zone)});
  }
  if (table.fits(terminal)) {
    table.print(output, terminal);
    return;
  }
  for (const auto& file : statistics.files) {
    printLine(report::printable(file.name) + ", " + report::readableSize(file.bytes) + ": " +
                  report::grouped(file.environments) +
                  (file.environments == 1 ? " environment, " : " environments, ") +
                  report::grouped(file.events) + (file.events == 1 ? " item" : " items"),
              output, terminal);
    if (!file.oldest.empty()) {
      output << "  from " << report::readableTime(file.oldest, terminal.zone) << "\n  to   "
             << report::readableTime(file.newest, terminal.zone)
             << (terminal.zone == report::Zone::Utc ? " UTC\n" : "\n");
    }
  }
}

using Counts = std::map<std::string, std::vector<std::int64_t>>;

TextTable tableOf(const Counts& counts, const std::vector<std::string>& titles) {
  std::vector<TextTable::Column> columns{{"Category"}};
  for (const auto& title : titles) {
    columns.push_back({title, Kind::Right});
  }
  TextTable table(columns);
  for (const auto& [category, row] : counts) {
    std::vector<TextTable::Cell> cells;
    cells.emplace_back(category.empty() ? "(none)" : category);
    for (const auto count : row) {
      cells.emplace_back(report::grouped(count));
    }
    table.add(cells);
  }
  return table;
}

void printCategories(const Statistics& statistics, std::ostream& output, const Terminal& terminal) {
  Counts counts;
  std::vector<std::string> titles;
  std::vector<std::string> shortTitles;
  for (const auto& file : statistics.files) {
    for (const auto& [category, count] : file.eventsByCategory) {
      auto& row = counts[category];
      row.resize(statistics.files.size());
      row[titles.size()] = count;
    }
    titles.push_back("In " + file.name);
    shortTitles.emplace_back(file.name == records::sendingDatabaseName   ? "Sending"
                             : file.name == records::supportDatabaseName ? "Support"
                                                                         : "Items");
  }
  auto table = tableOf(counts, titles);
  if (table.fits(terminal)) {
    table.print(output, terminal);
  } else {
    tableOf(counts, shortTitles).print(output, terminal);
  }
}

std::string summaryOf(const Statistics& statistics) {
  if (const auto refused = statistics.files.front().refused) {
    return *refused == 0 ? "The collector refused nothing."
                         : "Texts that the collector refused: " + report::grouped(*refused) + '.';
  }
  const auto& waiting = statistics.waiting;
  if (!waiting || (waiting->rows == 0 && !waiting->complete)) {
    return std::string("What waits to be sent is not known: no ") + records::sendingDatabaseName +
           " can be read whole.";
  }
  if (waiting->rows == 0) {
    return "Nothing waits to be sent.";
  }
  return (waiting->complete ? "" : "At least ") + report::grouped(waiting->rows) +
         (waiting->rows == 1 ? " row waits" : " rows wait") + " to be sent, " +
         report::readableSize(static_cast<std::uintmax_t>(waiting->bytes)) + " in " +
         report::grouped(waiting->packages) + (waiting->packages == 1 ? " package." : " packages.");
}

void printMarkers(const Statistics& statistics, std::ostream& output, const Terminal& terminal) {
  if (statistics.markers.empty() && statistics.aside.empty()) {
    const bool complete =
        (statistics.waiting || statistics.files.front().refused) && statistics.warnings.empty();
    output << (complete ? terminal.styled("No markers of loss.", Style::Good)
                        : "No markers of loss in what could be read.")
           << '\n';
    return;
  }
  TextTable table({{"Marker"},
                   {"Count", Kind::Right},
                   {report::timeTitle("Last", terminal.zone), Kind::Wrapped},
                   {"Meaning", Kind::Wrapped}});
  for (const auto& [name, marker] : statistics.markers) {
    table.add({{name, Style::Bad},
               report::grouped(marker.count),
               report::readableTime(marker.last, terminal.zone),
               std::string(meaningOf(name)) +
                   (marker.message.empty() ? "" : " It says: " + marker.message)});
  }
  for (const auto& file : statistics.aside) {
    table.add({{"Set aside", Style::Bad},
               "1",
               "",
               utilities::utf8FromPath(file.filename()) +
                   ": the client found this file corrupt and began a new one. What it still holds "
                   "was neither sent nor is it counted here."});
  }
  table.print(output, terminal);
}

}  // namespace

void print(const Statistics& statistics, std::ostream& output, const Terminal& terminal) {
  printFiles(statistics, output, terminal);
  output << '\n';
  printCategories(statistics, output, terminal);
  output << '\n';
  printLine(summaryOf(statistics), output, terminal);
  output << '\n';
  printMarkers(statistics, output, terminal);
}

void printJson(const Statistics& statistics, std::ostream& output) {
  Json files = Json::array();
  for (const auto& file : statistics.files) {
    Json rows{{"Environments", file.environments}, {"Items", file.events}};
    if (file.refused) {
      rows["Refused"] = *file.refused;
    }
    files.push_back({{"file", file.name},
                     {"bytes", file.bytes},
                     {"rows", rows},
                     {"categories", file.eventsByCategory},
                     {"oldest", file.oldest},
                     {"newest", file.newest}});
  }
  Json markers = Json::array();
  for (const auto& [name, marker] : statistics.markers) {
    markers.push_back({{"marker", name},
                       {"count", marker.count},
                       {"first", marker.first},
                       {"last", marker.last},
                       {"message", marker.message},
                       {"meaning", meaningOf(name)}});
  }
  Json aside = Json::array();
  for (const auto& file : statistics.aside) {
    aside.push_back(utilities::utf8FromPath(file.filename()));
  }
  Json waiting;
  if (statistics.waiting) {
    waiting = {{"rows", statistics.waiting->rows},
               {"bytes", statistics.waiting->bytes},
               {"packages", statistics.waiting->packages},
               {"complete", statistics.waiting->complete}};
  }
  const Json all{{"files", files},
                 {"waiting", waiting},
                 {"markers", markers},
                 {"setAside", aside},
                 {"warnings", statistics.warnings}};
  output << all.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace qel::support
