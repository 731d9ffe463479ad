#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Exception.h"
#include "tools/common/Program.h"
#include "tools/support/Commands.h"

namespace qel::support {
namespace {

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
