#pragma once

#include <cstdint>
#include <string>

namespace qel::tools {

/// The address of a server.
struct Endpoint {
  std::string host;  ///< name or address; an IPv6 address without brackets
  std::uint16_t port = 0;
};

/// The endpoint as `HOST:PORT` or `[IPv6]:PORT`.
std::string toText(const Endpoint& endpoint);

/// Parses the value of `option`. Throws `InputError` unless it has one of the forms of `toText` and
/// a port of at least `lowestPort`.
Endpoint parseEndpoint(const std::string& option, const std::string& text,
                       std::uint16_t lowestPort);

}  // namespace qel::tools
