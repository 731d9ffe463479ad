#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/CommandLine.h"
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

using tools::Arguments;
using tools::Operand;
using tools::Option;

constexpr const char* programName = "qel-support";

const Operand directoryOperand{"DIR", "directory of the databases"};
const Option sessionOption{"session", "ID|last", "which session", Option::Presence::Required};
const Option jsonOption{"json", "", "prints JSON, for scripts"};

std::filesystem::path directoryOf(const Arguments& arguments) {
  return utilities::pathFromUtf8(arguments.text(directoryOperand.name));
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
  if (arguments.has("json")) {
    printJson(sessions, std::cout);
  } else {
    print(sessions, std::cout, Terminal::ofStandardOutput());
  }
  return 0;
}

int showSession(const Arguments& arguments) {
  const TimelineFilter filter{arguments.text("category"), readSince(arguments.text("since"))};
  Reading reading(arguments);
  const auto timeline =
      timelineOf(findSession(reading.recordings, arguments.text("session")), filter);
  reading.end();
  if (arguments.has("json")) {
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
  if (arguments.has("json")) {
    printJson(statistics, std::cout);
  } else {
    print(statistics, std::cout, Terminal::ofStandardOutput());
  }
  return 0;
}

int exportOne(const Arguments& arguments) {
  const auto target = utilities::pathFromUtf8(arguments.text("to"));
  Reading reading(arguments);
  const auto session = findSession(reading.recordings, arguments.text("session"));
  const auto rows = exportSession(session, target);
  reading.end();
  std::cout << "exported " << rows << " rows of session " << printable(session.id) << " to "
            << utilities::utf8FromPath(target / supportDatabaseName) << '\n';
  return 0;
}

int report(const Arguments& arguments) {
  const auto file = utilities::pathFromUtf8(arguments.text("output"));
  Reading reading(arguments);
  const auto session = findSession(reading.recordings, arguments.text("session"));
  const auto events = eventsOf(session);
  reading.end();
  writeNewFile(file, htmlReport(session, events));
  std::cout << "wrote " << utilities::utf8FromPath(file) << '\n';
  return 0;
}

int removeAll(const Arguments& arguments) {
  return purge(directoryOf(arguments), arguments.has("yes"), std::cout) ? 0 : 1;
}

struct Command {
  std::string name;
  std::string summary;
  std::vector<Option> options;
  std::function<int(const Arguments&)> run;
};

const std::vector<Command>& commands() {
  static const std::vector<Command> all{
      {"sessions",
       "Lists the sessions that a directory's databases tell of.",
       {jsonOption},
       showSessions},
      {"show",
       "Tells what happened in a session.",
       {sessionOption,
        {"category", "NAME", "only records of this category"},
        {"since", "TIME", "only from then on, such as \"2026-11-21 09:30\" (UTC)"},
        jsonOption},
       showSession},
      {"stats",
       "Tells what the databases hold, what waits to be sent and whether anything was lost.",
       {jsonOption},
       showStatistics},
      {"export",
       "Copies a session into a database of its own.",
       {sessionOption,
        {"to", "DIR", "directory of the new SupportDatabase.db", Option::Presence::Required}},
       exportOne},
      {"report",
       "Writes a page (HTML) about a session.",
       {sessionOption, {"output", "FILE", "the new file", Option::Presence::Required}},
       report},
      {"purge",
       "Removes everything recorded: databases, journals, files set aside, logs of "
       "qel-sample-host.",
       {{"yes", "", "does not ask"}},
       removeAll}};
  return all;
}

void printHelp() {
  std::cout << "Usage: " << programName << " COMMAND DIR [options]\n"
            << "Reads what an analytics client has recorded in the directory DIR.\n\n";
  for (const auto& command : commands()) {
    std::cout << "  " << command.name << std::string(10 - command.name.size(), ' ')
              << command.summary << '\n';
  }
  std::cout << "\n\"" << programName << " COMMAND --help\" lists a command's options.\n";
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.empty()) {
    throw tools::InputError("a command is missing (--help lists them)");
  }
  const auto& name = arguments.front();
  if (name == "--help") {
    printHelp();
    return 0;
  }
  if (name == "--version") {
    tools::parseCommandLine({programName, "", {}}, arguments, std::cout);
    return 0;
  }
  const auto command = std::find_if(commands().begin(), commands().end(),
                                    [&](const Command& known) { return known.name == name; });
  if (command == commands().end()) {
    throw tools::InputError("unknown command \"" + name + "\" (--help lists them)");
  }
  const auto parsed = tools::parseCommandLine(
      {programName + (' ' + name), command->summary, command->options, {directoryOperand}},
      {arguments.begin() + 1, arguments.end()}, std::cout);
  if (!parsed) {
    return 0;
  }
  return command->run(*parsed);
}

}  // namespace
}  // namespace qel::support

int main(int argc, char** argv) {
  using namespace qel;
  // What customers recorded is for the owner's eyes alone.
  ::umask(S_IRWXG | S_IRWXO);
  // Failures are told in this program's own words.
  log::LogSettings logging;
  logging.standardError = false;
  log::LogManager::instance().configure(logging);
  return tools::runProgram(support::programName, [&] {
    const int status = support::run(std::vector<std::string>(argv + 1, argv + argc));
    if (!std::cout.flush()) {
      throw exception("cannot write to standard output");
    }
    return status;
  });
}
