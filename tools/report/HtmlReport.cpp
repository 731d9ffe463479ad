#include "tools/report/HtmlReport.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include <kainjow/mustache.hpp>

#include "host/QelUtilities/Exception.h"
#include "tools/records/Moment.h"
#include "tools/report/CategoryLanes.h"
#include "tools/report/Ending.h"
#include "tools/report/MemoryPlot.h"
#include "tools/report/ReportTables.h"
#include "tools/report/ReportTexts.h"

namespace qel::report {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::object;
using records::Event;
using records::Session;

/// The length of a character at the start of the text that HTML forbids, or that would reverse the
/// text after it (U+202A to U+202E, U+2066 to U+2069); 0 if there is none.
std::size_t lengthOfForbidden(std::string_view text) {
  const auto byte = [&](std::size_t place) {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
  };
  if (byte(0) < 0x20 && byte(0) != '\n' && byte(0) != '\t') {
    return 1;
  }
  const bool isReversing =
      byte(0) == 0xE2 && ((byte(1) == 0x80 && byte(2) >= 0xAA && byte(2) <= 0xAE) ||
                          (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9));
  return isReversing ? 3 : 0;
}

/// Escapes a text for an element or a quoted attribute. A text of more than 2000 bytes would make
/// the page slow, so it is cut after a whole character and ends with an ellipsis.
std::string escaped(const std::string& text) {
  constexpr std::size_t longest = 2000;
  const auto isInsideCharacter = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
  };
  auto end = std::min(text.size(), longest);
  while (end > 0 && end < text.size() && isInsideCharacter(text[end])) {
    --end;
  }
  std::string shown;
  for (std::size_t place = 0; place < end;) {
    const auto forbidden = lengthOfForbidden(std::string_view(text).substr(place));
    forbidden > 0 ? shown += "\uFFFD" : shown += text[place];
    place += std::max<std::size_t>(forbidden, 1);
  }
  return kainjow::mustache::html_escape(shown) + (end < text.size() ? "…" : "");
}

/// The facts of the first environment record.
data environmentOf(const std::vector<Event>& events) {
  data facts(data::type::list);
  const auto environment = std::find_if(events.begin(), events.end(), [](const Event& event) {
    return event.category == records::environmentCategory;
  });
  if (environment != events.end()) {
    for (const auto& [name, value] : environment->details) {
      facts << object{{"name", name}, {"value", value}};
    }
  }
  return facts;
}

data listOf(const std::vector<std::string>& texts) {
  data list(data::type::list);
  for (const auto& text : texts) {
    list << data("text", text);
  }
  return list;
}

/// A time axis from the earliest to the latest valid time of the events.
TimeAxis axisOf(const std::vector<Event>& events) {
  std::vector<std::int64_t> times;
  for (const auto& event : events) {
    if (const auto time = records::millisecondsOf(event.time)) {
      times.push_back(*time);
    }
  }
  const auto [first, last] = std::minmax_element(times.begin(), times.end());
  return times.empty() ? TimeAxis(0, 0) : TimeAxis(*first, *last);
}

}  // namespace

std::string htmlReport(const Session& session, const std::vector<Event>& events,
                       const std::vector<std::string>& remarks, const std::string& list) {
  const auto axis = axisOf(events);
  const auto ending = endingOf(events);
  data report(object{{"style", reportStyle}, {"plot", plotTemplate}, {"session", session.id}});
  if (!list.empty()) {
    report["list"] = list;
  }
  report["verdict"] = verdictOf(session, events, ending);
  report["isIncomplete"] = !remarks.empty();
  report["remarks"] = listOf(remarks);
  report["end"] = endTable(events, ending);
  report["environment"] = environmentOf(events);
  report["marks"] = axis.marks();
  report["crashes"] = crashMarks(events, axis);
  report["timeline"] = categoryLanes(events, axis);
  report["memory"] = memoryPlots(events, axis);
  report["commands"] = commandTable(events);
  report["issues"] = issueTable(events);
  report["categories"] = eventTables(events);
  kainjow::mustache::mustache page(reportTemplate);
  page.set_custom_escape(escaped);
  std::string html;
  page.render(report, [&html](const std::string& part) { html += part; });
  if (!page.is_valid()) {
    throw qel::exception("the template of the report is broken: " + page.error_message());
  }
  return html;
}

}  // namespace qel::report
