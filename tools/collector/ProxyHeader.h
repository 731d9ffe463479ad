#pragma once

#include <optional>
#include <string>
#include <utility>

#include <boost/asio/awaitable.hpp>
#include <boost/beast/core/tcp_stream.hpp>

namespace qel::collector {

/// Reads the header that a load balancer sends before the client's first byte: version 2 of the
/// PROXY protocol. Returns the client's address and port; empty if the load balancer itself is the
/// client. `std::nullopt` if the header is invalid or longer than any that is needed. Throws
/// `boost::system::system_error` if the connection ends.
/// https://www.haproxy.org/download/2.6/doc/proxy-protocol.txt
boost::asio::awaitable<std::optional<std::string>> readProxyHeader(
    boost::beast::tcp_stream& stream);

}  // namespace qel::collector
