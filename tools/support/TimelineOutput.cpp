#include "tools/support/TimelineOutput.h"

#include <ostream>

#include "tools/records/Moment.h"
#include "tools/support/DisplayText.h"
#include "tools/support/DisplayTime.h"
#include "tools/support/TextTable.h"

namespace qel::support {
namespace {

using records::Event;

Style styleOf(const Event& event) {
  const bool failure = event.category == "Application" &&
                       (event.subcategory == "Crashed" || event.subcategory == "Asserted");
  return failure || event.category == "CIP" ? Style::Bad : Style::Plain;
}

std::string dayOf(const Event& event) { return event.time.substr(0, 10); }

/// The time of day only; the date is in the heading.
std::string clockOf(const Event& event) {
  constexpr std::size_t day = 11;
  return event.time.size() > day && records::millisecondsOf(event.time) ? event.time.substr(day, 12)
                                                                        : event.time;
}

}  // namespace

void print(const Timeline& timeline, std::ostream& output, const Terminal& terminal) {
  const auto& [session, events] = timeline;
  output << "Session " << terminal.styled(printable(session.id), Style::Heading) << ", "
         << (session.first.empty() ? "at no known time"
                                   : readableTime(printable(session.first)) + " UTC")
         << ", " << readableLength(session.lengthInMs()) << ", "
         << terminal.styled(nameOf(session.end), session.end == records::Session::End::Crashed
                                                     ? Style::Bad
                                                     : Style::Plain)
         << '\n';
  if (events.empty()) {
    output << "\nno such records\n";
  }
  using Kind = TextTable::Column::Kind;
  for (auto event = events.begin(); event != events.end();) {
    const auto day = dayOf(*event);
    output << '\n' << terminal.styled(printable(day), Style::Heading) << '\n';
    TextTable table({{"Time"}, {"Category"}, {"What", Kind::Wrapped}, {"Details", Kind::Wrapped}});
    for (; event != events.end() && dayOf(*event) == day; ++event) {
      table.add({{clockOf(*event), Style::Faint},
                 event->category,
                 {titleOf(*event), styleOf(*event)},
                 detailsOf(*event)});
    }
    table.print(output, terminal);
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
