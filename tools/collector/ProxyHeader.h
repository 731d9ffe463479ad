#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qel::collector {

/// The header that a load balancer sends before the client's first byte: version 2 of the PROXY
/// protocol. https://www.haproxy.org/download/2.6/doc/proxy-protocol.txt
/// @{
inline constexpr std::size_t proxyStartSize = 16;

/// The number of bytes that follow the first `proxyStartSize` bytes. `std::nullopt` if these do not
/// begin such a header, or if it is longer than any that is needed.
std::optional<std::size_t> proxyRestSize(std::string_view start);

/// The client's address and port; empty if the load balancer itself is the client. `std::nullopt`
/// if the header is invalid. `rest` must have the size that `proxyRestSize` returned.
std::optional<std::string> proxyClient(std::string_view start, std::string_view rest);
/// @}

}  // namespace qel::collector
