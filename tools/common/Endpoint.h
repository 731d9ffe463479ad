#pragma once

#include <cstdint>
#include <string>

namespace qel::tools {

/// Where a server is or listens.
struct Endpoint {
  std::string host;  ///< name or address, an IPv6 address without its brackets
  std::uint16_t port = 0;
};

/// `HOST:PORT`, `[IPv6]:PORT`.
std::string toText(const Endpoint& endpoint);

/// Reads the value of `option`. Throws `InputError` unless it has one of the forms of `toText`,
/// with a port from `lowestPort` on.
Endpoint parseEndpoint(const std::string& option, const std::string& text,
                       std::uint16_t lowestPort);

}  // namespace qel::tools
