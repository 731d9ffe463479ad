#include "host/QelHttp/Client.h"

#include <algorithm>
#include <string_view>

#include "host/QelHttp/ConnectionPool.h"
#include "host/QelHttp/SettingsInForce.h"
#include "host/QelLog/LogManager.h"

namespace qel::protocol::https {
namespace {

bool isNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
         c == '-' || c == '_';
}

bool isPathCharacter(char c) { return c > ' ' && c <= '~' && c != '#'; }

/// Rejects values that would end a header line, or change the request or its recipient. No error
/// message quotes a value.
void check(const Message& message) {
  const auto require = [](bool holds, const char* complaint) {
    if (!holds) {
      throw Error(std::string("not posted: ") + complaint);
    }
  };
  const auto isOneLine = [](std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
  };
  require(!message.host.empty() && std::ranges::all_of(message.host, isNameCharacter),
          "the host is no plain host name");
  require(message.path.starts_with('/') && std::ranges::all_of(message.path, isPathCharacter),
          "the path does not begin with a slash or holds a character that no path has");
  require(isOneLine(message.contentType), "the content type holds CR, LF or NUL");
  require(isOneLine(message.user), "the user holds CR, LF or NUL");
  require(message.user.find(':') == std::string::npos,
          "the user holds a colon, which Basic authentication cannot carry");
  require(isOneLine(message.secret), "the secret holds CR, LF or NUL");
}

/// The reason why the outcome is not a response; empty if the outcome is a response.
std::string refusalOf(const Outcome& outcome) {
  if (outcome.status >= 400) {
    return {};
  }
  if (!outcome.failure.empty()) {
    return outcome.failure;
  }
  if (outcome.status < 200) {
    return "no final answer, only status " + std::to_string(outcome.status);
  }
  if (!outcome.wholeBodySent) {
    return "answered with status " + std::to_string(outcome.status) +
           " before the whole body was sent";
  }
  return {};
}

std::string nameOfServer(const Message& message, const Settings& settings) {
  return connectsElsewhere(settings, message.host) ? message.host + " at " + settings.connectTo
                                                   : message.host;
}

}  // namespace

http::Response Client::post(const Message& message) {
  check(message);
  const auto settings = settingsInForce();
  const Outcome outcome = ConnectionPool::instance().exchange(message, settings);
  if (const std::string refusal = refusalOf(outcome); !refusal.empty()) {
    throw Error("posting to " + nameOfServer(message, *settings) + " failed: " + refusal,
                outcome.isCertificateRejected ? Error::Cause::Certificate : Error::Cause::Other);
  }
  if (outcome.status >= 400) {
    log::LogManager::instance()
        .getLogger("qel.protocol.https.Client")
        ->log(log::Level::Warning, nameOfServer(message, *settings) + " answered with status " +
                                       std::to_string(outcome.status));
  }
  return {outcome.status};
}

}  // namespace qel::protocol::https
