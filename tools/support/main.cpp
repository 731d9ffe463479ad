#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <sys/stat.h>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/Program.h"
#include "tools/support/DisplayText.h"
#include "tools/support/HtmlReport.h"
#include "tools/support/NewFile.h"
#include "tools/support/Purge.h"
#include "tools/support/Recordings.h"
#include "tools/support/SessionExport.h"
#include "tools/support/SessionListOutput.h"
#include "tools/support/StatisticsOutput.h"
#include "tools/support/Terminal.h"
#include "tools/support/TimelineOutput.h"

namespace qel::support {
namespace {

constexpr const char* programName = "qel-support";

/// What the user gave the command; empty or false where it was not given.
struct Arguments {
  std::string directory;
  std::string session;
  std::string category;
  std::string since;
  std::string to;
  std::string output;
  bool json = false;
  bool yes = false;
};

std::filesystem::path directoryOf(const Arguments& arguments) {
  return utilities::pathFromUtf8(arguments.directory);
}

/// A directory's databases, with a progress bar while they are read.
struct Reading {
  explicit Reading(const Arguments& arguments)
      : recordings(directoryOf(arguments), [this](double part) { bar->show(part); }) {}

  ~Reading() { end(); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  /// No more is read: the bar goes, and what could not be read is told.
  void end() {
    if (!bar) {
      return;
    }
    bar.reset();
    for (const auto& remark : recordings.remarks()) {
      std::cerr << programName << ": warning: " + remark + '\n';
    }
  }

  std::optional<ProgressBar> bar{"reading"};
  Recordings recordings;
};

int showSessions(const Arguments& arguments) {
  Reading reading(arguments);
  const auto sessions = listSessions(reading.recordings);
  reading.end();
  if (arguments.json) {
    printJson(sessions, std::cout);
  } else {
    print(sessions, std::cout, Terminal::ofStandardOutput());
  }
  return 0;
}

int showSession(const Arguments& arguments) {
  const TimelineFilter filter{arguments.category, readSince(arguments.since)};
  Reading reading(arguments);
  const auto timeline = timelineOf(findSession(reading.recordings, arguments.session), filter);
  reading.end();
  if (arguments.json) {
    printJson(timeline, std::cout);
  } else {
    print(timeline, std::cout, Terminal::ofStandardOutput());
  }
  return 0;
}

int showStatistics(const Arguments& arguments) {
  Reading reading(arguments);
  const auto statistics = gatherStatistics(reading.recordings);
  reading.end();
  if (arguments.json) {
    printJson(statistics, std::cout);
  } else {
    print(statistics, std::cout, Terminal::ofStandardOutput());
  }
  return 0;
}

int exportOne(const Arguments& arguments) {
  const auto target = utilities::pathFromUtf8(arguments.to);
  Reading reading(arguments);
  const auto session = findSession(reading.recordings, arguments.session);
  const auto rows = exportSession(session, target);
  reading.end();
  std::cout << "exported " << rows << " rows of session " << printable(session.id) << " to "
            << utilities::utf8FromPath(target / supportDatabaseName) << '\n';
  return 0;
}

int report(const Arguments& arguments) {
  const auto file = utilities::pathFromUtf8(arguments.output);
  Reading reading(arguments);
  const auto session = findSession(reading.recordings, arguments.session);
  const auto events = eventsOf(session);
  reading.end();
  writeNewFile(file, htmlReport(session, events));
  std::cout << "wrote " << utilities::utf8FromPath(file) << '\n';
  return 0;
}

int removeAll(const Arguments& arguments) {
  return purge(directoryOf(arguments), arguments.yes, std::cout) ? 0 : 1;
}

int run(int count, const char* const* values) {
  CLI::App program("Reads what an analytics client has recorded in the directory DIR.",
                   programName);
  program.require_subcommand(1);
  Arguments arguments;
  int (*chosen)(const Arguments&) = nullptr;
  const auto addCommand = [&](const char* name, const char* summary, auto action) {
    auto* command = program.add_subcommand(name, summary);
    command->callback([&chosen, action] { chosen = action; });
    command->add_option("DIR", arguments.directory, "directory of the databases")
        ->type_name("")
        ->required();
    return command;
  };
  const auto addSession = [&](CLI::App* command) {
    command->add_option("--session", arguments.session, "which session")
        ->type_name("ID|last")
        ->required();
  };
  const auto addJson = [&](CLI::App* command) {
    command->add_flag("--json", arguments.json, "prints JSON, for scripts");
  };

  addJson(addCommand("sessions", "Lists the sessions that a directory's databases tell of.",
                     showSessions));
  auto* show = addCommand("show", "Tells what happened in a session.", showSession);
  addSession(show);
  show->add_option("--category", arguments.category, "only records of this category")
      ->type_name("NAME");
  show->add_option("--since", arguments.since,
                   "only from then on, such as \"2026-11-21 09:30\" (UTC)")
      ->type_name("TIME");
  addJson(show);
  addJson(addCommand(
      "stats",
      "Tells what the databases hold, what waits to be sent and whether anything was lost.",
      showStatistics));
  auto* exporting = addCommand("export", "Copies a session into a database of its own.", exportOne);
  addSession(exporting);
  exporting->add_option("--to", arguments.to, "directory of the new SupportDatabase.db")
      ->type_name("DIR")
      ->required();
  auto* reporting = addCommand("report", "Writes a page (HTML) about a session.", report);
  addSession(reporting);
  reporting->add_option("--output", arguments.output, "the new file")
      ->type_name("FILE")
      ->required();
  addCommand("purge",
             "Removes everything recorded: databases, journals, files set aside, logs of "
             "qel-sample-host.",
             removeAll)
      ->add_flag("--yes", arguments.yes, "does not ask");
  program.footer("\"qel-support COMMAND --help\" lists a command's options.");
  return tools::readCommandLine(program, count, values) ? chosen(arguments) : 0;
}

}  // namespace
}  // namespace qel::support

int main(int count, char** values) {
  using namespace qel;
  // What customers recorded is for the owner's eyes alone.
  ::umask(S_IRWXG | S_IRWXO);
  // Failures are told in this program's own words.
  log::LogSettings logging;
  logging.standardError = false;
  log::LogManager::instance().configure(logging);
  return tools::runProgram(support::programName, [&] {
    const int status = support::run(count, values);
    if (!std::cout.flush()) {
      throw exception("cannot write to standard output");
    }
    return status;
  });
}
