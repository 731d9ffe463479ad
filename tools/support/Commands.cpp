#include "tools/support/Commands.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <iterator>
#include <optional>
#include <vector>

#include "host/QelUtilities/Exception.h"
#include "tools/records/Recordings.h"
#include "tools/report/DisplayText.h"
#include "tools/report/HtmlReport.h"
#include "tools/support/Following.h"
#include "tools/support/NewFile.h"
#include "tools/support/Purge.h"
#include "tools/support/SessionExport.h"
#include "tools/support/SessionListOutput.h"
#include "tools/support/StatisticsOutput.h"
#include "tools/support/TimelineOutput.h"

namespace qel::support {
namespace {

/// The recordings in a place. Shows a progress bar while they are read.
struct Reading {
  explicit Reading(const Arguments& given)
      : arguments(given), recordings(given.path(), [this](double part) { bar->show(part); }) {}

  ~Reading() { end(); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  /// Finds the session that the user chose. Lists the latest ones if there are several.
  records::Session session(const records::SessionChoice& choice) {
    try {
      return findSession(recordings, choice);
    } catch (const records::AmbiguousSession& several) {
      constexpr std::ptrdiff_t mostListed = 20;
      const auto& all = several.sessions();
      end();
      print({all.end() - std::min(std::ssize(all), mostListed), all.end()}, std::cerr,
            arguments.terminal());
      throw;
    }
  }

  /// Removes the bar and prints warnings about what could not be read.
  void end() {
    if (!bar) {
      return;
    }
    bar.reset();
    for (const auto& remark : recordings.remarks()) {
      std::cerr << programName << ": warning: " + remark + '\n';
    }
  }

  const Arguments& arguments;
  std::optional<ProgressBar> bar{"reading"};
  records::Recordings recordings;
};

/// Prints the result of `read`.
template <typename Read>
int show(const Arguments& arguments, const Read& read) {
  Reading reading(arguments);
  const auto found = read(reading);
  reading.end();
  if (arguments.json) {
    printJson(found, std::cout);
  } else {
    print(found, std::cout, arguments.terminal());
  }
  return 0;
}

TimelineFilter filterOf(const Arguments& arguments) {
  const auto period = [&](const char* option, const std::string& text) {
    return text.empty() ? report::Period() : report::readPeriod(option, text, arguments.zone());
  };
  return {arguments.category, period("--since", arguments.since).first,
          period("--until", arguments.until).last, report::TextSearch(arguments.search)};
}

/// Prints JSON as one record per line.
int follow(const Arguments& arguments, const records::SessionChoice& choice,
           const TimelineFilter& filter) {
  std::optional<Reading> reading(std::in_place, arguments);
  const auto session = reading->session(choice);
  records::EventReader reader(session.id);
  const auto earlier = reader.next(*session.source);
  const auto file = session.source->path();
  reading.reset();
  if (!arguments.json) {
    printHeading(session, std::cout, arguments.terminal());
  }
  std::cerr << programName << ": following session " << report::printable(session.id)
            << "; Ctrl-C ends\n";
  TimelinePrinter printer(std::cout, arguments.terminal());
  const auto print = [&](const std::vector<records::Event>& events) {
    arguments.json ? printJsonLines(filter.select(events), std::cout)
                   : printer.print(filter.select(events));
    if (!std::cout.flush()) {
      throw exception("cannot write to standard output");
    }
  };
  print(earlier);
  Following(file, std::move(reader)).run(print);
  return 0;
}

}  // namespace

int showSessions(const Arguments& arguments) {
  return show(arguments, [](Reading& reading) { return listSessions(reading.recordings); });
}

int showStatistics(const Arguments& arguments) {
  return show(arguments, [](Reading& reading) { return gatherStatistics(reading.recordings); });
}

int showSession(const Arguments& arguments) {
  const auto filter = filterOf(arguments);
  const records::SessionChoice choice(arguments.session);
  if (arguments.follow) {
    return follow(arguments, choice, filter);
  }
  return show(arguments, [&](Reading& reading) {
    const auto session = reading.session(choice);
    return Timeline{session, filter.select(eventsOf(session))};
  });
}

int exportOne(const Arguments& arguments) {
  const auto target = utilities::pathFromUtf8(arguments.to);
  const records::SessionChoice choice(arguments.session);
  Reading reading(arguments);
  const auto session = reading.session(choice);
  const auto rows = exportSession(session, target);
  reading.end();
  std::cout << "exported " << rows << " rows of session " << report::printable(session.id) << " to "
            << utilities::utf8FromPath(target / records::supportDatabaseName) << '\n';
  return 0;
}

int report(const Arguments& arguments) {
  const auto file = utilities::pathFromUtf8(arguments.output);
  const records::SessionChoice choice(arguments.session);
  Reading reading(arguments);
  const auto session = reading.session(choice);
  const auto events = eventsOf(session);
  reading.end();
  const auto page = report::htmlReport(session, events, reading.recordings.remarks());
  if (arguments.output == "-") {
    std::cout << page;
    return 0;
  }
  writeNewFile(file, page);
  std::cout << "wrote " << utilities::utf8FromPath(file) << '\n';
  return 0;
}

int removeAll(const Arguments& arguments) {
  return purge(arguments.path(), arguments.yes, std::cout) ? 0 : 1;
}

}  // namespace qel::support
