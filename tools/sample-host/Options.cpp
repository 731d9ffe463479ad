#include "tools/sample-host/Options.h"

#include <fstream>
#include <sstream>

#include <CLI/CLI.hpp>

#include "Application/Log/Analytics/ServerConnection/HostName.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/ByteOrderMark.h"
#include "tools/common/Endpoint.h"
#include "tools/common/Number.h"

namespace qel::samplehost {
namespace {

using tools::InputError;
using utilities::pathFromUtf8;

constexpr long long secondsOfHundredYears = 3'155'760'000;

std::string contentOf(const std::string& option, const std::string& file) {
  std::ifstream stream(pathFromUtf8(file), std::ios::binary);
  std::ostringstream content;
  content << stream.rdbuf();
  if (!stream.is_open() || stream.bad() || content.str().empty()) {
    throw InputError(option + ": cannot read " + file + ", or it is empty");
  }
  return content.str();
}

void checkCaBundle(const std::string& file) {
  if (contentOf("--ca", file).find("BEGIN CERTIFICATE") == std::string::npos) {
    throw InputError("--ca: " + file + " holds no certificate (PEM)");
  }
}

std::string complaintAboutUser(const std::string& name) {
  return name.find(':') == std::string::npos ? "" : "a name with a colon cannot be sent";
}

/// The content of the file without its byte order mark and its final line break.
std::string secretFrom(const std::string& file) {
  auto secret = contentOf("--secret-file", file);
  tools::removeByteOrderMark(secret);
  for (const char lineEnd : {'\n', '\r'}) {
    if (secret.ends_with(lineEnd)) {
      secret.pop_back();
    }
  }
  if (secret.find_first_of(std::string("\r\n\0", 3)) != std::string::npos) {
    throw InputError("--secret-file: " + file + " holds more than one line, or a NUL");
  }
  return secret;
}

std::filesystem::path existingDirectory(const std::string& name) {
  auto directory = pathFromUtf8(name);
  std::error_code unreadable;
  if (!std::filesystem::is_directory(directory, unreadable)) {
    throw InputError("--directory: there is no directory " + name);
  }
  return directory;
}

qel::Guid parseSessionId(const std::string& text) {
  try {
    return qel::Guid::parse(text);
  } catch (const qel::exception&) {
    throw InputError("--session-id: \"" + text + "\" is not a GUID");
  }
}

/// Option values that are not parsed yet.
struct Texts {
  std::string directory;
  std::string secretFile;
  std::string sessionId;
  std::string retention;
  std::string speed = "1";
  std::string exitDeadline = "5";
};

bool readTexts(const tools::Arguments& arguments, Options& options, Texts& texts) {
  CLI::App program(
      "Simulates the CAD program: owns an analytics client and broadcasts the\n"
      "notifications of a session script.",
      "qel-sample-host");
  const auto add = [&](const char* name, const char* kind, std::string& text, const char* help) {
    return program.add_option(name, text, help)->type_name(kind);
  };
  add("--directory", "DIR", texts.directory, "existing directory of the databases and the log file")
      ->required();
  add("--session", "FILE", options.session, "session script, - for standard input");
  add("--server", "HOST:PORT", options.server, "address to use for the analytics server");
  add("--server-name", "NAME", options.serverName, "host name of the server, as in its certificate")
      ->check(log::analytics::serverconnection::complaintAboutHostName);
  program.add_flag("--check-connection", options.onlyChecksConnection,
                   "report whether server, certificate and user are right, and exit");
  add("--ca", "FILE", options.caBundle, "trusted certificates (PEM) instead of the system's");
  auto* user =
      add("--user", "NAME", options.user, "user name for the server")->check(complaintAboutUser);
  auto* secret =
      add("--secret-file", "FILE", texts.secretFile, "file that holds the user's secret");
  user->needs(secret);
  secret->needs(user);
  add("--installation-id", "TEXT", options.installationId,
      "installation to record (default: generated once and stored in DIR)");
  add("--session-id", "GUID", texts.sessionId, "session to record (default: a new one)");
  program.add_flag_callback(
      "--no-sending", [&] { options.sendingAllowed = false; },
      "deny permission to store items for sending");
  program.add_flag_callback(
      "--no-support", [&] { options.supportAllowed = false; },
      "deny permission to store items for support");
  add("--retention", "SECONDS", texts.retention,
      "age at which support items are deleted (default: never)");
  add("--speed", "N", texts.speed, "speed-up factor: waits are divided by N");
  add("--exit-deadline", "SECONDS", texts.exitDeadline,
      "maximum time for the final upload at exit");
  return tools::readCommandLine(program, arguments);
}

}  // namespace

std::optional<Options> readOptions(const tools::Arguments& arguments) {
  Options options;
  Texts texts;
  if (!readTexts(arguments, options, texts)) {
    return std::nullopt;
  }
  options.directory = existingDirectory(texts.directory);
  if (!options.server.empty()) {
    tools::parseEndpoint("--server", options.server, 1);
  }
  if (!options.caBundle.empty()) {
    checkCaBundle(options.caBundle);
  }
  if (!texts.secretFile.empty()) {
    options.secret = secretFrom(texts.secretFile);
  }
  options.sessionId =
      texts.sessionId.empty() ? qel::Guid::create() : parseSessionId(texts.sessionId);
  if (!texts.retention.empty()) {
    options.retention = std::chrono::seconds(tools::parseNumber(
        "--retention", texts.retention, 0LL, secondsOfHundredYears, "a whole number"));
  }
  options.speed = tools::parseNumber("--speed", texts.speed, 0.001, 1e6, "a number");
  options.exitDeadline =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(
          tools::parseNumber("--exit-deadline", texts.exitDeadline, 0., 3600., "a number")));
  return options;
}

}  // namespace qel::samplehost
