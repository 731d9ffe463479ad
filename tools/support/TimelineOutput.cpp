#include "tools/support/TimelineOutput.h"

#include <ostream>

#include "tools/report/DisplayText.h"
#include "tools/report/DisplayTime.h"

namespace qel::support {
namespace {

using records::Event;

Style styleOf(const Event& event) {
  const bool failure = event.category == "Application" &&
                       (event.subcategory == "Crashed" || event.subcategory == "Asserted");
  return failure || event.category == "CIP" ? Style::Bad : Style::Plain;
}

}  // namespace

void TimelinePrinter::begin(const std::string& day) {
  if (table_) {
    table_->print(output_, terminal_);
  }
  day_ = day;
  output_ << '\n' << terminal_.styled(report::printable(day), Style::Heading) << '\n';
  using Kind = TextTable::Column::Kind;
  table_.emplace(std::vector<TextTable::Column>{
      {"Time"}, {"Category"}, {"What", Kind::Wrapped}, {"Details", Kind::Wrapped}});
}

void TimelinePrinter::print(const std::vector<Event>& events) {
  for (const auto& event : events) {
    const auto [day, clock] = report::clockTime(event.time, terminal_.zone);
    if (!table_ || day != day_) {
      begin(day);
    }
    const auto [what, details] = report::textOf(event);
    table_->add({{clock, Style::Faint}, event.category, {what, styleOf(event)}, details});
  }
  if (table_) {
    table_->print(output_, terminal_);
  }
}

void printHeading(const records::Session& session, std::ostream& output, const Terminal& terminal) {
  const auto start = report::printable(report::readableTime(session.first, terminal.zone)) +
                     (terminal.zone == report::Zone::Utc ? " UTC" : "");
  output << "Session " << terminal.styled(report::printable(session.id), Style::Heading) << ", "
         << (session.first.empty() ? "at no known time" : start) << ", "
         << report::readableLength(session.lengthInMs()) << ", "
         << terminal.styled(endOf(session), session.end == records::Session::End::Crashed
                                                ? Style::Bad
                                                : Style::Plain)
         << '\n';
}

void print(const Timeline& timeline, std::ostream& output, const Terminal& terminal) {
  printHeading(timeline.session, output, terminal);
  if (timeline.events.empty()) {
    output << "\nno such records\n";
  }
  TimelinePrinter(output, terminal).print(timeline.events);
}

void printJsonLines(const std::vector<Event>& events, std::ostream& output) {
  for (const auto& event : events) {
    output << event.text << '\n';
  }
}

void printJson(const Timeline& timeline, std::ostream& output) {
  const char* separator = "[\n";
  for (const auto& event : timeline.events) {
    output << separator << event.text;
    separator = ",\n";
  }
  output << (timeline.events.empty() ? "[]\n" : "\n]\n");
}

}  // namespace qel::support
