#include "tools/common/Endpoint.h"

#include "tools/common/Number.h"

namespace qel::tools {

std::string toText(const Endpoint& endpoint) {
  const bool bracketed = endpoint.host.find(':') != std::string::npos;
  return (bracketed ? '[' + endpoint.host + ']' : endpoint.host) + ':' +
         std::to_string(endpoint.port);
}

Endpoint parseEndpoint(const std::string& option, const std::string& text,
                       std::uint16_t lowestPort) {
  const auto colon = text.rfind(':');
  std::string host = text.substr(0, colon);
  const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (bracketed) {
    host = host.substr(1, host.size() - 2);
  }
  if (colon == std::string::npos || host.empty() ||
      (!bracketed && host.find_first_of(":[]") != std::string::npos)) {
    throw InputError(option + ": \"" + text + "\" is not of the form HOST:PORT");
  }
  constexpr std::uint16_t highestPort = 65535;
  return {host, parseNumber(option, text.substr(colon + 1), lowestPort, highestPort, "a port")};
}

}  // namespace qel::tools
