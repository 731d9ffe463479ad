#include "host/QelC/Parameters.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "Application/Log/Analytics/ServerConnection/HostName.h"
#include "host/QelC/CallError.h"
#include "host/QelC/Texts.h"
#include "host/QelUtilities/PathText.h"

namespace qel::c {
namespace {

constexpr std::uint32_t defaultReleaseLimit = 5000;
constexpr std::uint64_t secondsOfHundredYears = 3'155'760'000;
/// The struct of the first version ended with this member.
constexpr std::size_t smallestSize =
    offsetof(qel_analytics_parameters, environment) + sizeof(qel_analytics_environment);
/// No version will have a larger struct. A larger size is that of a struct that was not set.
constexpr std::size_t largestSize = 4096;

// Declarations in other languages rely on this layout.
static_assert(sizeof(void*) != 8 ||
              (smallestSize == 136 && offsetof(qel_analytics_parameters, session_id) == 24 &&
               offsetof(qel_analytics_parameters, retention_seconds) == 72 &&
               offsetof(qel_analytics_parameters, context) == 96 &&
               offsetof(qel_analytics_parameters, environment) == 128 &&
               offsetof(qel_analytics_parameters, server_host) == 136));

[[noreturn]] void refuse(const std::string& text) {
  throw CallError(QEL_ANALYTICS_INVALID_ARGUMENT, text);
}

/// The struct in this version's size. Members that the caller's struct lacks are zero.
qel_analytics_parameters inThisVersion(const qel_analytics_parameters& given) {
  const std::size_t size = given.struct_size;
  if (size < smallestSize || size > largestSize || size % sizeof(void*) != 0) {
    refuse("struct_size is " + std::to_string(size) + ", but must be the size of the struct");
  }
  qel_analytics_parameters parameters{};
  const auto* const bytes = reinterpret_cast<const char*>(&given);
  std::memcpy(&parameters, bytes, std::min(size, sizeof(parameters)));
  if (size > sizeof(parameters) &&
      std::any_of(bytes + sizeof(parameters), bytes + size, [](char byte) { return byte != 0; })) {
    refuse("the struct has a member that version " QEL_VERSION " of the library does not know");
  }
  return parameters;
}

Guid sessionId(const char* given) {
  const auto text = optionalText(given, "session_id");
  if (text.empty()) {
    return {};
  }
  try {
    return Guid::parse(text);
  } catch (const qel::exception&) {
    refuse("session_id is not a GUID");
  }
}

log::LogSettings logSettings(const qel_analytics_parameters& given,
                             const std::shared_ptr<Callbacks>& callbacks) {
  log::LogSettings settings;
  if (given.log_level < 0 || given.log_level > QEL_ANALYTICS_LOG_ERROR) {
    refuse("log_level must be 0 or one of QEL_ANALYTICS_LOG_...");
  }
  if (given.log_level != 0) {
    settings.lowestLevel = given.log_level - QEL_ANALYTICS_LOG_DEBUG;
  }
  settings.file = utilities::pathFromUtf8(optionalText(given.log_file, "log_file"));
  if (given.log != nullptr) {
    settings.receiver = [callbacks](int level, const std::string& logger,
                                    const std::string& message) {
      callbacks->log(level, logger, message);
    };
  }
  settings.standardError = settings.file.empty() && !settings.receiver;
  return settings;
}

protocol::https::Settings httpsSettings(const qel_analytics_parameters& given) {
  protocol::https::Settings settings;
  settings.caBundle = optionalText(given.ca_file, "ca_file");
  settings.connectFor = optionalText(given.server_host, "server_host");
  if (settings.connectFor.empty()) {
    settings.connectFor = QEL_ANALYTICS_SERVER_HOST;
  }
  settings.connectTo = optionalText(given.connect_to, "connect_to");
  settings.proxy = optionalText(given.proxy, "proxy");
  return settings;
}

}  // namespace

Parameters readParameters(const qel_analytics_parameters* given) {
  using namespace log::analytics::serverconnection;
  if (given == nullptr) {
    refuse("parameters is null");
  }
  const auto known = inThisVersion(*given);
  Parameters parameters;
  parameters.directory = requiredText(known.directory, "directory");
  parameters.installationId = requiredText(known.installation_id, "installation_id");
  parameters.sessionId = sessionId(known.session_id);
  parameters.serverUser = optionalText(known.server_user, "server_user");
  parameters.serverSecret = optionalText(known.server_secret, "server_secret");
  if (parameters.directory.empty() || parameters.installationId.empty()) {
    refuse("directory and installation_id must not be empty");
  }
  if (parameters.serverUser.find(':') != std::string::npos) {
    refuse("server_user contains a colon");
  }
  parameters.serverHost = optionalText(known.server_host, "server_host");
  if (!parameters.serverHost.empty() && !isHostName(parameters.serverHost)) {
    refuse("server_host " + complaintAboutHostName(parameters.serverHost));
  }
  if (known.retention_seconds > secondsOfHundredYears || known.reserved != 0) {
    refuse("retention_seconds is more than a hundred years, or reserved is not 0");
  }
  if (known.retention_seconds != 0) {
    parameters.retention = std::chrono::seconds(known.retention_seconds);
  }
  parameters.releaseLimit = std::chrono::milliseconds(
      known.release_limit == 0 ? defaultReleaseLimit : known.release_limit);
  parameters.https = httpsSettings(known);
  parameters.callbacks = std::make_shared<Callbacks>(known);
  parameters.log = logSettings(known, parameters.callbacks);
  return parameters;
}

}  // namespace qel::c
