#include "tools/support/HtmlReport.h"

#include <algorithm>
#include <cstdint>

#include "host/QelUtilities/PathText.h"
#include "tools/support/CategoryLanes.h"
#include "tools/support/DisplayText.h"
#include "tools/support/Html.h"
#include "tools/support/MemoryPlot.h"
#include "tools/support/Moment.h"
#include "tools/support/ReportStyle.h"
#include "tools/support/ReportTables.h"

namespace qel::support {
namespace {

using html::element;

std::string fact(const std::string& name, const std::string& value, const char* style = "") {
  return element("dt", name) + element("dd", value, style) + '\n';
}

std::string head(const Session& session) {
  return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
         "style-src 'unsafe-inline'\">\n" +
         element("title", "Session " + session.id) + "\n<style>" + reportStyle +
         "</style></head>\n<body>\n";
}

std::string overview(const Session& session, const std::vector<Event>& events) {
  const bool crashed = session.end == Session::End::Crashed;
  std::string text = "<header><h1>Session</h1><p>" + element("code", session.id) +
                     "</p></header>\n<nav><a href=\"#timeline\">Timeline</a><a href=\"#memory\">"
                     "Memory</a><a href=\"#commands\">Commands</a><a href=\"#issues\">Issues</a>"
                     "<a href=\"#records\">Records</a></nav>\n<dl>";
  text += fact("From", readableTime(session.first) + " UTC");
  text += fact("To", readableTime(session.last) + " UTC");
  text += fact("Length", readableLength(session.lengthInMs()));
  text += fact("End", nameOf(session.end), crashed ? "bad" : "");
  text += fact("Events", grouped(session.events));
  text += fact("Read from", utilities::utf8FromPath(session.database->file().filename()));
  for (const auto& event : events) {
    if (event.category == environmentCategory) {
      for (const auto& [name, value] : event.details) {
        text += fact(name, value);
      }
      break;
    }
  }
  return text + "</dl>\n";
}

std::string section(const char* id, const char* title, const std::string& content) {
  return "<section id=\"" + std::string(id) + "\">" + element("h2", title) + '\n' + content +
         "</section>\n";
}

std::string memory(const std::vector<Event>& events, const TimeAxis& axis) {
  std::string plots;
  for (const auto& [scope, title] :
       {std::pair("Application", "The program"), std::pair("Total", "The whole machine")}) {
    const auto plot = memoryPlot(events, scope, axis);
    plots += plot.empty() ? "" : element("h3", title) + plot;
  }
  return plots.empty()
             ? element("p", "No memory was reported.", "faint")
             : plots +
                   element("p",
                           "A block reaches from the smallest to the largest amount between two "
                           "reports; a line joins the readings that a crash told.",
                           "faint");
}

/// From the first to the last time that can be read.
TimeAxis axisOf(const std::vector<Event>& events) {
  std::vector<std::int64_t> times;
  for (const auto& event : events) {
    if (const auto time = millisecondsOf(event.time)) {
      times.push_back(*time);
    }
  }
  const auto [first, last] = std::minmax_element(times.begin(), times.end());
  return times.empty() ? TimeAxis(0, 0) : TimeAxis(*first, *last);
}

}  // namespace

std::string htmlReport(const Session& session, const std::vector<Event>& events) {
  const auto axis = axisOf(events);
  return head(session) + overview(session, events) +
         section("timeline", "Timeline (UTC)", categoryLanes(events, axis)) +
         section("memory", "Memory", memory(events, axis)) +
         section("commands", "Commands", commandTable(events)) +
         section("issues", "Issues", issueTable(events)) +
         section("records", "Records by category", eventTables(events)) + "</body></html>\n";
}

}  // namespace qel::support
