#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/Program.h"
#include "tools/records/Recordings.h"
#include "tools/support/DisplayText.h"
#include "tools/support/Following.h"
#include "tools/support/HtmlReport.h"
#include "tools/support/NewFile.h"
#include "tools/support/Purge.h"
#include "tools/support/SessionExport.h"
#include "tools/support/SessionListOutput.h"
#include "tools/support/StatisticsOutput.h"
#include "tools/support/Terminal.h"
#include "tools/support/TimelineOutput.h"

namespace qel::support {
namespace {

constexpr const char* programName = "qel-support";

/// The arguments of the command. Those that the user did not give are empty or false.
struct Arguments {
  std::string place;
  std::string session;
  std::string category;
  std::string since;
  std::string until;
  std::string search;
  std::string to;
  std::string output;
  bool json = false;
  bool localTime = false;
  bool follow = false;
  bool yes = false;

  std::filesystem::path path() const { return utilities::pathFromUtf8(place); }
  Zone zone() const { return localTime ? Zone::Local : Zone::Utc; }
  Terminal terminal() const {
    auto terminal = Terminal::ofStandardOutput();
    terminal.zone = zone();
    return terminal;
  }
};

/// The recordings in a place. Shows a progress bar while they are read.
struct Reading {
  explicit Reading(const Arguments& given)
      : arguments(given), recordings(given.path(), [this](double part) { bar->show(part); }) {}

  ~Reading() { end(); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  /// Finds the session that the user chose. Lists the sessions if there are several.
  records::Session session(const records::SessionChoice& choice) {
    try {
      return findSession(recordings, choice);
    } catch (const records::AmbiguousSession& several) {
      end();
      print(several.sessions(), std::cerr, arguments.terminal());
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

int showSessions(const Arguments& arguments) {
  return show(arguments, [](Reading& reading) { return listSessions(reading.recordings); });
}

int showStatistics(const Arguments& arguments) {
  return show(arguments, [](Reading& reading) { return gatherStatistics(reading.recordings); });
}

TimelineFilter filterOf(const Arguments& arguments) {
  const auto period = [&](const char* option, const std::string& text) {
    return text.empty() ? Period() : readPeriod(option, text, arguments.zone());
  };
  return {arguments.category, period("--since", arguments.since).first,
          period("--until", arguments.until).last, TextSearch(arguments.search)};
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
  std::cout << "exported " << rows << " rows of session " << printable(session.id) << " to "
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
  const auto page = htmlReport(session, events, reading.recordings.remarks());
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

/// Defines the program's commands with their options, and runs the given command.
class CommandLine {
 public:
  CommandLine() {
    program_.require_subcommand(1);
    program_.get_formatter()->label("SUBCOMMAND", "COMMAND");
    addReadingCommands();
    addWritingCommands();
    // Set last, because a command inherits the footer that is set when the command is added.
    program_.footer("\"qel-support COMMAND --help\" lists a command's options.");
  }

  /// Runs the command that the arguments name. Returns the program's exit status.
  int run(const tools::Arguments& arguments) {
    return tools::readCommandLine(program_, arguments) ? chosen_(arguments_) : 0;
  }

 private:
  using Action = int (*)(const Arguments&);

  void addReadingCommands() {
    addFormat(add("sessions", "Lists the sessions.", showSessions));
    auto* const showing = add("show", "Shows what happened in a session.", showSession);
    addSession(showing, "session to show");
    addOption(showing, "--category", arguments_.category, "only records of this category", "NAME");
    addOption(showing, "--since", arguments_.since,
              "only records at or after TIME, such as \"2026-11-21 09:30\"", "TIME");
    addOption(showing, "--until", arguments_.until,
              "only records at or before TIME, including all of its day, minute or second", "TIME");
    addOption(showing, "--search", arguments_.search,
              "only records that contain TEXT, in upper or lower case", "TEXT");
    showing->add_flag("--follow", arguments_.follow,
                      "then show new records as they are written, until Ctrl-C");
    addFormat(showing);
    addFormat(
        add("stats",
            "Shows the content of the databases, the pending rows and whether events were lost.",
            showStatistics));
  }

  void addWritingCommands() {
    auto* const exporting = add("export", "Copies a session into a separate database.", exportOne);
    addSession(exporting, "session to export");
    addOption(exporting, "--to", arguments_.to, "directory of the new SupportDatabase.db", "DIR")
        ->required();
    auto* const reporting = add("report", "Writes an HTML page about a session.", report);
    addSession(reporting, "session to report on");
    addOption(reporting, "--output", arguments_.output, "file to create, or - for standard output",
              "FILE")
        ->required();
    add("purge",
        "Removes all recordings: databases, journals, corrupt files that were set aside, logs of "
        "qel-sample-host.",
        removeAll)
        ->add_flag("--yes", arguments_.yes, "do not ask for confirmation");
  }

  CLI::App* add(const char* name, const char* summary, Action action) {
    auto* const command = program_.add_subcommand(name, summary);
    command->group("Commands");
    command->callback([this, action] { chosen_ = action; });
    addOption(command, "DIR", arguments_.place,
              action == removeAll
                  ? "directory of the databases"
                  : "directory of the databases, a single .db file, or a collector's store",
              "")
        ->required();
    return command;
  }

  void addSession(CLI::App* command, const std::string& purpose) {
    addOption(command, "--session", arguments_.session,
              purpose + " (its ID, the beginning of its ID, or last)", "ID|last")
        ->required();
  }

  void addFormat(CLI::App* command) {
    command->add_flag("--json", arguments_.json, "print JSON, for scripts");
    command->add_flag("--local-time", arguments_.localTime,
                      "show and read times in the local time zone instead of UTC");
  }

  static CLI::Option* addOption(CLI::App* command, const char* name, std::string& value,
                                const std::string& meaning, const char* placeholder) {
    return command->add_option(name, value, meaning)->type_name(placeholder);
  }

  CLI::App program_{"Inspects, exports and removes recordings of an analytics client.",
                    programName};
  Arguments arguments_;
  Action chosen_ = nullptr;
};

}  // namespace
}  // namespace qel::support

int main(int count, char** values) {
  using namespace qel;
  // No log on standard error, because this program reports failures itself.
  log::LogSettings logging;
  logging.standardError = false;
  log::LogManager::instance().configure(logging);
  return tools::runProgram(support::programName, count, values, [](const auto& arguments) {
    const int status = support::CommandLine().run(arguments);
    if (!std::cout.flush()) {
      throw exception("cannot write to standard output");
    }
    return status;
  });
}
