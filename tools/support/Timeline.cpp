#include "tools/support/Timeline.h"

#include <algorithm>
#include <cctype>
#include <ostream>

#include "tools/common/InputError.h"
#include "tools/support/DisplayText.h"
#include "tools/support/Moment.h"
#include "tools/support/TextTable.h"

namespace qel::support {
namespace {

bool equalInAnyCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  });
}

Style styleOf(const Event& event) {
  const bool failure = event.category == "Application" &&
                       (event.subcategory == "Crashed" || event.subcategory == "Asserted");
  return failure || event.category == "CIP" ? Style::Bad : Style::Plain;
}

std::string dayOf(const Event& event) { return event.time.substr(0, 10); }

/// The time without its day, which stands above.
std::string clockOf(const Event& event) {
  constexpr std::size_t day = 11;
  return event.time.size() > day && millisecondsOf(event.time) ? event.time.substr(day, 12)
                                                               : event.time;
}

}  // namespace

bool TimelineFilter::admits(const Event& event) const {
  return (category.empty() || equalInAnyCase(event.category, category)) && event.time >= since;
}

std::string readSince(const std::string& text) {
  std::string time = text;
  if (time.size() > 10 && time[10] == ' ') {
    time[10] = 'T';
  }
  if (!time.empty() && !millisecondsOf(time)) {
    throw tools::InputError("--since: " + text +
                            R"( is no time in UTC such as 2026-11-21 or "2026-11-21 09:30:05")");
  }
  if (time.ends_with('Z') && time.size() < 24) {
    time.pop_back();
  }
  return time;
}

void printTimeline(const Session& session, const std::vector<Event>& events, std::ostream& output,
                   const Terminal& terminal) {
  output << "Session " << terminal.styled(printable(session.id), Style::Heading) << ", "
         << (session.first.empty() ? "at no known time"
                                   : readableTime(printable(session.first)) + " UTC")
         << ", " << readableLength(session.lengthInMs()) << ", "
         << terminal.styled(nameOf(session.end),
                            session.end == Session::End::Crashed ? Style::Bad : Style::Plain)
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

void printJson(const std::vector<Event>& events, std::ostream& output) {
  const char* separator = "[\n";
  for (const auto& event : events) {
    output << separator << event.text;
    separator = ",\n";
  }
  output << (events.empty() ? "[]\n" : "\n]\n");
}

}  // namespace qel::support
