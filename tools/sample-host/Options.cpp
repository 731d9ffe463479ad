#include "tools/sample-host/Options.h"

#include <fstream>
#include <sstream>

#include "host/QelUtilities/PathText.h"
#include "tools/common/CommandLine.h"

namespace qel::samplehost {
namespace {

using tools::Arguments;
using tools::InputError;
using tools::Option;
using utilities::pathFromUtf8;

constexpr long long secondsOfHundredYears = 3'155'760'000;

const tools::ProgramDescription program{
    "qel-sample-host",
    "Plays the part of the CAD program: owns an analytics client and broadcasts the notifications\n"
    "of a session script.",
    {
        {"directory", "DIR", "existing directory of the databases and the log file",
         Option::Presence::Required},
        {"session", "FILE", "session script, - for standard input", Option::Presence::Optional,
         "-"},
        {"server", "HOST:PORT", "where the analytics server's name is reached"},
        {"ca", "FILE", "trusted certificates (PEM) instead of the system's"},
        {"user", "NAME", "user to send as"},
        {"secret-file", "FILE", "file that holds the user's secret"},
        {"installation-id", "TEXT", "installation to record (default: made once, kept in DIR)"},
        {"session-id", "GUID", "session to record (default: a new one)"},
        {"no-sending", "", "withholds the permission to store items for sending"},
        {"no-support", "", "withholds the permission to store items for support"},
        {"retention", "SECONDS", "age at which stored support items go (default: never)"},
        {"speed", "N", "divides the script's waits", Option::Presence::Optional, "1"},
        {"exit-deadline", "SECONDS", "how long sending may go on at the end",
         Option::Presence::Optional, "5"},
    }};

std::string contentOf(const Arguments& arguments, const std::string& option) {
  const auto file = arguments.text(option);
  std::ifstream stream(pathFromUtf8(file), std::ios::binary);
  std::ostringstream content;
  content << stream.rdbuf();
  if (!stream.is_open() || stream.bad() || content.str().empty()) {
    throw InputError("--" + option + ": cannot read " + file + ", or it is empty");
  }
  return content.str();
}

std::string caBundle(const Arguments& arguments) {
  if (arguments.has("ca") &&
      contentOf(arguments, "ca").find("BEGIN CERTIFICATE") == std::string::npos) {
    throw InputError("--ca: " + arguments.text("ca") + " holds no certificate (PEM)");
  }
  return arguments.text("ca");
}

std::string user(const Arguments& arguments) {
  if (arguments.text("user").find(':') != std::string::npos) {
    throw InputError("--user: a name with a colon cannot be sent");
  }
  if (arguments.has("user") != arguments.has("secret-file")) {
    throw InputError("--user and --secret-file go together");
  }
  return arguments.text("user");
}

/// What the file holds, but for the end of its last line.
std::string secret(const Arguments& arguments) {
  if (!arguments.has("secret-file")) {
    return {};
  }
  auto secret = contentOf(arguments, "secret-file");
  for (const char lineEnd : {'\n', '\r'}) {
    if (secret.ends_with(lineEnd)) {
      secret.pop_back();
    }
  }
  if (secret.find_first_of(std::string("\r\n\0", 3)) != std::string::npos) {
    throw InputError("--secret-file: " + arguments.text("secret-file") +
                     " holds more than one line, or a NUL");
  }
  return secret;
}

std::filesystem::path existingDirectory(const Arguments& arguments) {
  auto directory = pathFromUtf8(arguments.text("directory"));
  std::error_code unreadable;
  if (!std::filesystem::is_directory(directory, unreadable)) {
    throw InputError("--directory: there is no directory " + arguments.text("directory"));
  }
  return directory;
}

/// As it was given: the option's form is the one that the connection takes.
std::string checkedServer(const Arguments& arguments) {
  if (arguments.has("server")) {
    arguments.endpoint("server", 1);
  }
  return arguments.text("server");
}

qel::Guid sessionId(const Arguments& arguments) {
  if (!arguments.has("session-id")) {
    return qel::Guid::create();
  }
  try {
    return qel::Guid::parse(arguments.text("session-id"));
  } catch (const qel::exception&) {
    throw InputError("--session-id: \"" + arguments.text("session-id") + "\" is not a GUID");
  }
}

}  // namespace

std::optional<Options> readOptions(const std::vector<std::string>& commandLine,
                                   std::ostream& output) {
  const auto arguments = tools::parseCommandLine(program, commandLine, output);
  if (!arguments) {
    return std::nullopt;
  }
  Options options;
  options.directory = existingDirectory(*arguments);
  options.session = arguments->text("session");
  options.server = checkedServer(*arguments);
  options.caBundle = caBundle(*arguments);
  options.user = user(*arguments);
  options.secret = secret(*arguments);
  options.installationId = arguments->text("installation-id");
  options.sessionId = sessionId(*arguments);
  options.sendingAllowed = !arguments->has("no-sending");
  options.supportAllowed = !arguments->has("no-support");
  if (arguments->has("retention")) {
    options.retention =
        std::chrono::seconds(arguments->integer("retention", 0, secondsOfHundredYears));
  }
  options.speed = arguments->number("speed", 0.001, 1e6);
  options.exitDeadline = std::chrono::duration<double>(arguments->number("exit-deadline", 0, 3600));
  return options;
}

}  // namespace qel::samplehost
